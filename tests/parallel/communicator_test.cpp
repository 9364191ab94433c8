// The communicator without a host, and the seam for one.
#include <memory>

#include <gtest/gtest.h>
#include <zarel/C_Communicator.h>

#include "support/Slots.h"

namespace {

class Process : public C_Communicator {
public:
  Process(int process, int count) : C_Communicator(process, count) {}
  explicit Process(int process) : C_Communicator(process) {}
  ~Process() override { ++ended; }

  void become(int process, int count) {
    _cpuNum = process;
    _size = count;
  }

  static inline int ended = 0;
};

TEST(Communicator, IsARunOfOneProcess) {
  C_Communicator world;

  EXPECT_EQ(world.World(), 0);
  EXPECT_EQ(world.cpuNum(), 0);
  EXPECT_EQ(world.size(), 1);
}

// Every message and every reduction, on values that would show a change.
template <class T>
void expectMessagesToDoNothing(C_Communicator& world) {
  T values[2] = {T(1), T(0)};
  world.Bcast(values, 2, 0);
  world.send(0, 0, values, 2);
  world.recv(0, 0, values, 2);
  EXPECT_EQ(values[0], T(1));
  EXPECT_EQ(values[1], T(0));
}

template <class T>
void expectSumsToDoNothing(C_Communicator& world) {
  expectMessagesToDoNothing<T>(world);
  T values[2] = {T(1), T(0)};
  world.glbSum(2, values);
  EXPECT_EQ(values[0], T(1));
  EXPECT_EQ(values[1], T(0));
}

template <class T>
void expectExtremesToDoNothing(C_Communicator& world) {
  expectSumsToDoNothing<T>(world);
  T values[2] = {T(1), T(0)};
  world.glbMax(2, values);
  world.glbMin(2, values);
  EXPECT_EQ(values[0], T(1));
  EXPECT_EQ(values[1], T(0));
}

TEST(Communicator, DoesNothingForAllMessages) {
  C_Communicator world;
  expectMessagesToDoNothing<char>(world);
  expectSumsToDoNothing<short int>(world);
  expectSumsToDoNothing<float>(world);
  expectSumsToDoNothing<std::complex<float>>(world);
  expectExtremesToDoNothing<int>(world);
  expectExtremesToDoNothing<double>(world);
  expectExtremesToDoNothing<__int64>(world);
  expectExtremesToDoNothing<std::complex<double>>(world);
  bool flag = true;
  world.Bcast(&flag, 1, 0);
  world.glbOr(1, &flag);
  int bits = 5;
  world.glbOr(1, &bits);

  EXPECT_TRUE(flag);
  EXPECT_EQ(bits, 5);
}

TEST(Communicator, DoesNothingForAllElse) {
  C_Communicator world;
  int one = 1, in = 7;
  double realOne = 1, realIn = 7;
  int *ones = &one, *ins = &in;
  double *realOnes = &realOne, *realIns = &realIn;
  world.exchange(0, 1, &one, &one, &one, &one, &in);
  world.exchange(0, 1, &one, &one, &ones, &one, &ins);
  world.exchange(0, 1, &one, &one, &realOnes, &one, &realIns);
  world.barrier(0);
  world.check(1);
  world.abort(0, 1);

  EXPECT_EQ(in, 7);
  EXPECT_EQ(realIn, 7);
}

TEST(Communicator, NamesFilesByProcessUnlessThereIsOne) {
  EXPECT_EQ(C_Communicator().CreateDName("a", ".b"), "a.b");
  EXPECT_EQ(Process(3, 8).CreateDName("a", ".b"), "a3.b");
  EXPECT_EQ(Process(0, 2).CreateDName("a", ".b"), "a0.b");
  EXPECT_EQ(Process(5).CreateDName("a", ".b"), "a.b") << "a count of 1 alone decides";
  EXPECT_EQ(Process(0, 0).CreateDName("a", ".b"), "a0.b");
}

TEST(Communicator, SubclassesTellNumberAndCount) {
  Process process(2, 4);
  EXPECT_EQ(process.cpuNum(), 2);
  EXPECT_EQ(process.size(), 4);
  EXPECT_EQ(Process(2).size(), 1);
  process.become(1, 3);
  EXPECT_EQ(process.cpuNum(), 1);
  EXPECT_EQ(process.size(), 3);
}

TEST(Communicator, BelongsToTheLibraryOnlyAtItsEnd) {
  EXPECT_EQ(C_Communicator::Instance(), nullptr) << "until one is set";
  Process::ended = 0;
  auto first = std::make_unique<Process>(0, 2);
  C_Communicator::setInstance(first.get());
  EXPECT_EQ(C_Communicator::Instance(), first.get());
  C_Communicator::setInstance(new Process(1, 2));
  EXPECT_EQ(Process::ended, 0) << "a former one stays its owner's";

  C_Communicator::kill();

  EXPECT_EQ(Process::ended, 1);
  EXPECT_EQ(C_Communicator::Instance(), nullptr);
  C_Communicator::kill();
  EXPECT_EQ(Process::ended, 1) << "release without an instance does nothing";
}

// The binary interface rests on the places of the virtual functions.
#if defined(__x86_64__)
using support::slotOf;
using C = C_Communicator;
using Z = std::complex<double>;
using F = std::complex<float>;

TEST(Communicator, VirtualFunctionsKeepTheirPlaces) {
  EXPECT_EQ(slotOf(&C::World), 2);
  EXPECT_EQ(slotOf(&C::CreateDName), 3);
  EXPECT_EQ(slotOf(&C::abort), 4);
  EXPECT_EQ(slotOf(&C::barrier), 5);
  EXPECT_EQ(slotOf(&C::check), 6);
}

TEST(Communicator, ExchangesKeepTheirPlaces) {
  EXPECT_EQ(slotOf<void (C::*)(int, int, int*, int*, int*, int*, int*)>(&C::exchange), 7);
  EXPECT_EQ(slotOf<void (C::*)(int, int, int*, int*, int**, int*, int**)>(&C::exchange), 8);
  EXPECT_EQ(slotOf<void (C::*)(int, int, int*, int*, double**, int*, double**)>(&C::exchange), 9);
}

TEST(Communicator, ReductionsKeepTheirPlaces) {
  EXPECT_EQ(slotOf<void (C::*)(int, Z*)>(&C::glbMax), 10);
  EXPECT_EQ(slotOf<void (C::*)(int, double*)>(&C::glbMax), 11);
  EXPECT_EQ(slotOf<void (C::*)(int, __int64*)>(&C::glbMax), 12);
  EXPECT_EQ(slotOf<void (C::*)(int, int*)>(&C::glbMax), 13);
  EXPECT_EQ(slotOf<void (C::*)(int, Z*)>(&C::glbMin), 14);
  EXPECT_EQ(slotOf<void (C::*)(int, double*)>(&C::glbMin), 15);
  EXPECT_EQ(slotOf<void (C::*)(int, __int64*)>(&C::glbMin), 16);
  EXPECT_EQ(slotOf<void (C::*)(int, int*)>(&C::glbMin), 17);
  EXPECT_EQ(slotOf<void (C::*)(int, int*)>(&C::glbOr), 18);
  EXPECT_EQ(slotOf<void (C::*)(int, bool*)>(&C::glbOr), 19);
  EXPECT_EQ(slotOf<void (C::*)(int, Z*)>(&C::glbSum), 20);
  EXPECT_EQ(slotOf<void (C::*)(int, F*)>(&C::glbSum), 21);
  EXPECT_EQ(slotOf<void (C::*)(int, double*)>(&C::glbSum), 22);
  EXPECT_EQ(slotOf<void (C::*)(int, float*)>(&C::glbSum), 23);
  EXPECT_EQ(slotOf<void (C::*)(int, __int64*)>(&C::glbSum), 24);
  EXPECT_EQ(slotOf<void (C::*)(int, int*)>(&C::glbSum), 25);
  EXPECT_EQ(slotOf<void (C::*)(int, short int*)>(&C::glbSum), 26);
}

TEST(Communicator, BroadcastsKeepTheirPlaces) {
  const long bcast = slotOf<void (C::*)(char*, int, int)>(&C::Bcast);
  EXPECT_EQ(bcast, 7 + 3 + 4 + 4 + 2 + 7) << "exchange, glbMax, glbMin, glbOr, glbSum";
  EXPECT_EQ(slotOf<void (C::*)(Z*, int, int)>(&C::Bcast), bcast + 1);
  EXPECT_EQ(slotOf<void (C::*)(F*, int, int)>(&C::Bcast), bcast + 2);
  EXPECT_EQ(slotOf<void (C::*)(double*, int, int)>(&C::Bcast), bcast + 3);
  EXPECT_EQ(slotOf<void (C::*)(float*, int, int)>(&C::Bcast), bcast + 4);
  EXPECT_EQ(slotOf<void (C::*)(__int64*, int, int)>(&C::Bcast), bcast + 5);
  EXPECT_EQ(slotOf<void (C::*)(int*, int, int)>(&C::Bcast), bcast + 6);
  EXPECT_EQ(slotOf<void (C::*)(bool*, int, int)>(&C::Bcast), bcast + 7);
  EXPECT_EQ(slotOf<void (C::*)(short int*, int, int)>(&C::Bcast), bcast + 8);
}

TEST(Communicator, GroupsOfMessagesKeepTheirPlaces) {
  const long send = slotOf<void (C::*)(char*, int, int)>(&C::Bcast) + 9;
  EXPECT_EQ(slotOf<void (C::*)(int, int, char*, int)>(&C::send), send);
  EXPECT_EQ(slotOf<void (C::*)(int, int, Z*, int)>(&C::send), send + 1);
  EXPECT_EQ(slotOf<void (C::*)(int, int, F*, int)>(&C::send), send + 2);
  EXPECT_EQ(slotOf<void (C::*)(int, int, double*, int)>(&C::send), send + 3);
  EXPECT_EQ(slotOf<void (C::*)(int, int, float*, int)>(&C::send), send + 4);
  EXPECT_EQ(slotOf<void (C::*)(int, int, __int64*, int)>(&C::send), send + 5);
  EXPECT_EQ(slotOf<void (C::*)(int, int, int*, int)>(&C::send), send + 6);
  EXPECT_EQ(slotOf<void (C::*)(int, int, short int*, int)>(&C::send), send + 7);
  EXPECT_EQ(slotOf<void (C::*)(int, int, char*, int)>(&C::recv), send + 8);
  EXPECT_EQ(slotOf<void (C::*)(int, int, Z*, int)>(&C::recv), send + 9);
  EXPECT_EQ(slotOf<void (C::*)(int, int, F*, int)>(&C::recv), send + 10);
  EXPECT_EQ(slotOf<void (C::*)(int, int, double*, int)>(&C::recv), send + 11);
  EXPECT_EQ(slotOf<void (C::*)(int, int, float*, int)>(&C::recv), send + 12);
  EXPECT_EQ(slotOf<void (C::*)(int, int, __int64*, int)>(&C::recv), send + 13);
  EXPECT_EQ(slotOf<void (C::*)(int, int, int*, int)>(&C::recv), send + 14);
  EXPECT_EQ(slotOf<void (C::*)(int, int, short int*, int)>(&C::recv), send + 15);
}
#endif

} // namespace
