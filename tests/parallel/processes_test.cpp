// The communicator of the tests carries messages as a host's does.
#include <memory>
#include <stdexcept>
#include <vector>

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <zarel/C_Communicator.h>

#include "support/Processes.h"

using support::runProcesses;

namespace {

C_Communicator& world() {
  return *C_Communicator::Instance();
}

class Processes : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Ranks, Processes, testing::Values(1, 2, 3, 4));

TEST_P(Processes, EachRankRunsOnceWithTheCommunicatorInstalled) {
  std::vector<int> ran(static_cast<size_t>(GetParam()));
  runProcesses(GetParam(), [&](int rank) {
    EXPECT_EQ(world().size(), GetParam());
    ++ran[static_cast<size_t>(rank)];
    EXPECT_EQ(world().CreateDName("a", ".b"),
              GetParam() == 1 ? "a.b" : "a" + std::to_string(rank) + ".b");
  });
  EXPECT_EQ(ran, std::vector<int>(static_cast<size_t>(GetParam()), 1));
  EXPECT_EQ(C_Communicator::Instance(), nullptr);
}

TEST_P(Processes, MessagesGoRoundARing) {
  const int size = GetParam();
  runProcesses(size, [&](int rank) {
    for (int k = 0; k < 5; ++k) {
      double out[2] = {rank + 0.5, k * 1.0}, in[2] = {};
      world().send(world().World(), (rank + 1) % size, out, 2);
      world().recv(world().World(), (rank + size - 1) % size, in, 2);
      EXPECT_EQ(in[0], (rank + size - 1) % size + 0.5);
      EXPECT_EQ(in[1], k) << "in their order";
    }
  });
}

TEST_P(Processes, ReductionsCombineAllRanks) {
  const int size = GetParam();
  runProcesses(size, [&](int rank) {
    double sums[2] = {rank + 1.0, 1.0};
    world().glbSum(2, sums);
    EXPECT_EQ(sums[0], size * (size + 1) / 2);
    EXPECT_EQ(sums[1], size);
    int largest = rank, smallest = rank, bits = 1 << rank;
    world().glbMax(1, &largest);
    world().glbMin(1, &smallest);
    world().glbOr(1, &bits);
    EXPECT_EQ(largest, size - 1);
    EXPECT_EQ(smallest, 0);
    EXPECT_EQ(bits, (1 << size) - 1);
    bool last = rank == size - 1;
    world().glbOr(1, &last);
    EXPECT_TRUE(last);
    std::complex<double> least(1, -rank), most(1, -rank);
    world().glbMin(1, &least);
    world().glbMax(1, &most);
    EXPECT_EQ(least, std::complex<double>(1, -(size - 1)));
    EXPECT_EQ(most, std::complex<double>(1, 0));
  });
}

TEST_P(Processes, EveryRootBroadcasts) {
  runProcesses(GetParam(), [&](int rank) {
    for (int root = 0; root < GetParam(); ++root) {
      short int values[3] = {static_cast<short>(rank), 7, 8};
      world().Bcast(values, 3, root);
      EXPECT_EQ(values[0], root);
      world().Bcast(values, 0, root);
    }
  });
}

TEST_P(Processes, BarrierWaitsForAll) {
  std::vector<int> passed(8, 0);
  runProcesses(GetParam(), [&](int) {
    for (int& step : passed) {
      ++step;
      world().barrier(world().World());
      EXPECT_EQ(step, GetParam());
    }
  });
}

TEST(ProcessExchange, NeighboursSwapValues) {
  runProcesses(3, [](int rank) {
    int ranks[2] = {(rank + 1) % 3, (rank + 2) % 3};
    int outCounts[2] = {2, 1}, inCounts[2] = {1, 2};
    int out[3] = {10 * rank, 10 * rank + 1, 10 * rank + 2}, in[3] = {};
    world().exchange(91, 2, ranks, outCounts, out, inCounts, in);
    EXPECT_EQ(in[0], 10 * ranks[0] + 2);
    EXPECT_EQ(in[1], 10 * ranks[1]);
    EXPECT_EQ(in[2], 10 * ranks[1] + 1);

    double first[2] = {rank + 0.25, rank + 0.5}, second[1] = {rank + 0.75};
    double fromFirst[1] = {}, fromSecond[2] = {};
    double *outs[2] = {first, second}, *ins[2] = {fromFirst, fromSecond};
    world().exchange(91, 2, ranks, outCounts, outs, inCounts, ins);
    EXPECT_EQ(fromFirst[0], ranks[0] + 0.75);
    EXPECT_EQ(fromSecond[0], ranks[1] + 0.25);
    EXPECT_EQ(fromSecond[1], ranks[1] + 0.5);
  });
}

TEST(ProcessFaults, EndAllRanks) {
  const auto faulty = [](auto fault) {
    EXPECT_THROW(runProcesses(3,
                              [&](int rank) {
                                if (rank == 1) fault();
                                world().barrier(91);
                              }),
                 std::runtime_error);
    EXPECT_EQ(C_Communicator::Instance(), nullptr);
  };
  double value = 0;
  int number = 0;
  faulty([] { throw std::runtime_error("of the body"); });
  faulty([] { world().abort(91, 3); });
  faulty([] { world().check(1); });
  faulty([&] { world().glbSum(1, &value); });
  faulty([&] { world().send(91, 3, &value, 1); });
  faulty([&] {
    world().send(91, 1, &value, 1);
    world().recv(91, 1, &number, 1);
  });
  faulty([&] {
    double two[2] = {};
    world().send(91, 1, &value, 1);
    world().recv(91, 1, two, 2);
  });
  faulty([&] { world().recv(91, 0, &value, 1); });
}

TEST(ProcessFaults, WaitingForARankThatHasEndedIsAnError) {
  EXPECT_THROW(runProcesses(3,
                            [](int rank) {
                              if (rank != 1) world().barrier(91);
                            }),
               std::runtime_error);
}

TEST(ProcessFaults, AMessageThatNobodyReceivesFailsTheTest) {
  const auto forget = [] {
    runProcesses(2, [](int rank) {
      double value = 0;
      if (rank == 0) world().send(91, 1, &value, 1);
    });
  };
  EXPECT_NONFATAL_FAILURE(forget(), "rank 0 sent to rank 1 what nobody received");
}

} // namespace
