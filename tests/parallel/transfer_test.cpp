// Vectors between processes, for every scalar and index.
#include <memory>
#include <sstream>

#include "containers/OffCore.h"
#include "containers/support.h"
#include "support/FailingAllocation.h"
#include "support/Processes.h"

#include <zarel/C_Communicator.h>

namespace {

using support::runProcesses;

constexpr int handle = 91;

template <class C>
class Transfer : public ::testing::Test {};
TYPED_TEST_SUITE(Transfer, StorageCases, ScalarNames);

#define ZAREL_TYPES                                                                                \
  using T [[maybe_unused]] = typename TypeParam::T;                                                \
  using V = typename TypeParam::Vec

// Three values that tell their rank.
template <class V>
V ofRank(int rank) {
  V v(3);
  for (int i = 0; i < 3; ++i)
    v.SetVal(i, scalar<std::decay_t<decltype(v.GetVal(0))>>(10 * rank + i, i));
  return v;
}

TYPED_TEST(Transfer, SendTakesDimensionAndValuesAlong) {
  ZAREL_TYPES;
  runProcesses(2, [](int rank) {
    V v = ofRank<V>(1);
    if (rank == 0) {
      EXPECT_EQ(v.Send(handle, 1), 0);
    } else {
      V received(7);
      EXPECT_EQ(received.Recv(handle, 0), 0);
      EXPECT_TRUE(received == v);
    }
  });
}

TYPED_TEST(Transfer, BcastGivesAllTheVectorOfTheRoot) {
  ZAREL_TYPES;
  for (const int size : {2, 3, 4})
    runProcesses(size, [size](int rank) {
      for (int root = 0; root < size; ++root) {
        V v = rank == root ? ofRank<V>(root) : V(rank);
        EXPECT_EQ(v.Bcast(root), 0);
        V expected = ofRank<V>(root);
        EXPECT_TRUE(v == expected);
      }
    });
}

TYPED_TEST(Transfer, EmptyVectorsTravel) {
  ZAREL_TYPES;
  runProcesses(2, [](int rank) {
    V v(rank == 0 ? 0 : 4);
    EXPECT_EQ(rank == 0 ? v.Send(handle, 1) : v.Recv(handle, 0), 0);
    EXPECT_EQ(v.Dim(), 0);
    V other(rank == 0 ? 0 : 4);
    EXPECT_EQ(other.Bcast(0), 0);
    EXPECT_EQ(other.Dim(), 0);
  });
}

TYPED_TEST(Transfer, OneProcessBroadcastsToItself) {
  ZAREL_TYPES;
  runProcesses(1, [](int) {
    V v = ofRank<V>(0);
    EXPECT_EQ(v.Bcast(0), 0);
    V expected = ofRank<V>(0);
    EXPECT_TRUE(v == expected);
  });
}

TYPED_TEST(Transfer, WithoutACommunicatorNothingIsDone) {
  ZAREL_TYPES;
  V v = ofRank<V>(2);
  EXPECT_EQ(v.Send(handle, 1), 0);
  EXPECT_EQ(v.Recv(handle, 1), 0);
  EXPECT_EQ(v.Bcast(0), 0);
  V expected = ofRank<V>(2);
  EXPECT_TRUE(v == expected);
}

// A storage elsewhere shows only a window at a time; the messages are the same.
TEST(TransferOffCore, ValuesThatAreElsewhereTravelToo) {
  using Off = C_VecPi<double, int, OffCore<double, int>>;
  static constexpr int n = 10000;
  runProcesses(2, [](int rank) {
    Off off(rank == 0 ? n : 0);
    VecOf<double> in(rank == 0 ? n : 0);
    for (int i = 0; i < off.Dim(); ++i) {
      off.SetVal(i, i + 0.5);
      in[i] = -i;
    }
    if (rank == 0) {
      off.Send(handle, 1);
      in.Send(handle, 1);
    } else {
      in.Recv(handle, 0);
      off.Recv(handle, 0);
      EXPECT_EQ(in[n - 1], n - 0.5);
      EXPECT_EQ(off.GetVal(n - 1), 1 - n);
    }
    off.Bcast(1);
    ASSERT_EQ(off.Dim(), n);
    for (int i = 0; i < n; ++i)
      ASSERT_EQ(off.GetVal(i), -i);
  });
}

// Notes the messages of a rank and answers with a dimension.
class Noting : public C_Communicator {
public:
  explicit Noting(__int64 dimension = 0) : C_Communicator(0, 2), _dimension(dimension) {}

  void send(int h, int to, int* values, int count) override { note("int", h, to, *values, count); }
  void send(int h, int to, __int64* values, int count) override {
    note("hyper", h, to, *values, count);
  }
  void send(int h, int to, double* values, int count) override {
    note("double", h, to, count > 0 ? *values : 0, count);
  }
  void recv(int h, int from, __int64* values, int count) override {
    note("hyper", h, from, 0, count);
    *values = _dimension;
  }
  void Bcast(__int64* values, int count, int root) override {
    note("hyper", -1, root, 0, count);
    *values = _dimension;
  }
  void Bcast(double*, int count, int root) override { note("double", -1, root, 0, count); }

  std::vector<std::string> messages;

private:
  template <class T>
  void note(const char* type, int h, int rank, T value, int count) {
    std::ostringstream line;
    line << type << " " << h << " " << rank << " " << value << " x" << count;
    messages.push_back(line.str());
  }

  __int64 _dimension;
};

class TransferMessages : public ::testing::Test {
protected:
  ~TransferMessages() override { C_Communicator::setInstance(nullptr); }

  Noting& install(__int64 dimension = 0) {
    _noting = std::make_unique<Noting>(dimension);
    C_Communicator::setInstance(_noting.get());
    return *_noting;
  }
  using Lines = std::vector<std::string>;
  using Wide = C_VecPi<double, __int64, C_PtrInCore<double, __int64>>;

private:
  std::unique_ptr<Noting> _noting;
};

TEST_F(TransferMessages, DimensionComesFirstAsWideAsTheIndex) {
  VecOf<double> narrow(2, 1.5);
  Wide wide(2, 2.5);
  Noting& noting = install();

  narrow.Send(8, 3);
  wide.Send(8, 3);

  EXPECT_EQ(noting.messages,
            (Lines{"int 8 3 2 x1", "double 8 3 1.5 x2", "hyper 8 3 2 x1", "double 8 3 2.5 x2"}));
}

TEST_F(TransferMessages, AnEmptyBcastIsTwoMessages) {
  Noting& noting = install();
  Wide v;

  v.Bcast(1);

  EXPECT_EQ(noting.messages, (Lines{"hyper -1 1 0 x1", "double -1 1 0 x0"}));
}

TEST_F(TransferMessages, WhatAnIntCannotCountIsRefusedBeforeAMessage) {
  Noting& noting = install();
  double block[1] = {};
  Wide v(2147483648LL, block);

  EXPECT_EQ(codeOf([&] { v.Send(8, 3); }), 2880);
  EXPECT_EQ(noting.messages, Lines());
  Wide largest(2147483647LL, block);
  EXPECT_EQ(largest.Send(8, 3), 0) << "what an int just counts";
  EXPECT_EQ(noting.messages, (Lines{"hyper 8 3 2147483647 x1", "double 8 3 0 x2147483647"}));
  C_Communicator::setInstance(nullptr);
  EXPECT_EQ(codeOf([&] { v.Send(8, 3); }), 2880) << "whether or not there is a communicator";
}

TEST_F(TransferMessages, ReceiversRefuseWhatAnIntCannotCount) {
  Noting& noting = install(2147483648LL);
  Wide v(2, 1.0);

  EXPECT_EQ(codeOf([&] { v.Recv(8, 3); }), 2880);
  EXPECT_EQ(codeOf([&] { v.Bcast(1); }), 2880);

  EXPECT_EQ(noting.messages, (Lines{"hyper 8 3 0 x1", "hyper -1 1 0 x1"}));
  EXPECT_EQ(v.Dim(), 2) << "the vector stays";
}

TEST_F(TransferMessages, ANegativeDimensionIsNoSize) {
  Noting& noting = install(-1);
  Wide none(-3);
  EXPECT_EQ(codeOf([&] { none.Send(8, 3); }), 2);
  EXPECT_EQ(noting.messages, Lines());
  Wide v(2, 1.0);
  EXPECT_EQ(codeOf([&] { v.Recv(8, 3); }), 2);
  EXPECT_EQ(v.Dim(), 2);
}

TEST_F(TransferMessages, AViewThatCannotGrowIsRefused) {
  install(3);
  double block[2] = {1, 2};
  Wide v(2, block);
  EXPECT_EQ(codeOf([&] { v.Recv(8, 3); }), 2870);
}

// ---- no memory ----

// Brings a vector 0.5, 1.5, 2.5, ... and counts the messages without taking memory itself.
class Giving : public C_Communicator {
public:
  explicit Giving(int dimension) : C_Communicator(1, 2), _dimension(dimension) {
    setInstance(this);
  }
  ~Giving() override { setInstance(nullptr); }

  void send(int, int, int*, int) override { ++messages; }
  void send(int, int, double*, int) override { ++messages; }
  void recv(int, int, int* values, int) override { give(values); }
  void recv(int, int, double* values, int count) override { give(values, count); }
  void Bcast(int* values, int, int) override { give(values); }
  void Bcast(double* values, int count, int) override { give(values, count); }

  int messages = 0;

private:
  void give(int* dimension) {
    ++messages;
    *dimension = _dimension;
  }
  void give(double* values, int count) {
    ++messages;
    for (int i = 0; i < count; ++i)
      values[i] = i + 0.5;
  }

  int _dimension;
};

// Lets a vector of two values 9 take the five of another process, for every allocation that can
// fail. Either all of it has come or the vector is what it was and no values were asked for.
template <class V, class Take>
long failuresOfTaking(Take take) {
  Giving giving(5);
  return support::forEachFailingAllocation([&] {
    const auto nine = [] {
      const support::Unharmed unharmed;
      auto v = std::make_unique<V>(2);
      v->SetVal(0, 9);
      v->SetVal(1, 9);
      return v;
    };
    const std::unique_ptr<V> v = nine();
    giving.messages = 0;
    const int code = codeOf([&] { take(*v); });
    const support::Unharmed unharmed;
    const bool failed = support::FailingAllocation::happened();
    EXPECT_EQ(code, failed ? 1001 : 0);
    EXPECT_EQ(giving.messages, failed ? 1 : 2);
    EXPECT_EQ(v->Dim(), failed ? 2 : 5);
    EXPECT_EQ(v->GetVal(0), failed ? 9 : 0.5);
    EXPECT_EQ(v->GetVal(v->Dim() - 1), failed ? 9 : 4.5);
  });
}

TEST(TransferWithoutMemory, AReceiverStaysAsItWas) {
  EXPECT_GT(failuresOfTaking<VecOf<double>>([](auto& v) { v.Recv(8, 0); }), 0);
  EXPECT_GT(failuresOfTaking<VecOf<double>>([](auto& v) { v.Bcast(0); }), 0);
}

TEST(TransferWithoutMemory, ASenderInCoreNeedsNone) {
  Giving giving(2);
  VecOf<double> v(2, 1.0);

  EXPECT_EQ(support::forEachFailingAllocation([&] { v.Send(8, 0); }), 0);

  EXPECT_EQ(giving.messages, 2);
}

// A receiver is not left with a dimension whose values never come.
TEST(TransferWithoutMemory, ASenderOfValuesElsewhereSendsNothing) {
  Giving giving(2);
  C_VecPi<double, int, OffCore<double, int>> off(2);

  const long failures = support::forEachFailingAllocation([&] {
    giving.messages = 0;
    const int code = codeOf([&] { off.Send(8, 0); });
    const bool failed = support::FailingAllocation::happened();
    EXPECT_EQ(code, failed ? 1001 : 0);
    EXPECT_EQ(giving.messages, failed ? 0 : 2);
  });

  EXPECT_GT(failures, 0);
}

} // namespace
