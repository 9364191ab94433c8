#include "suggest.h"

#include <gtest/gtest.h>

using namespace app;

namespace {

TEST(Suggest, CountsEdits) {
  EXPECT_EQ(editDistance("", ""), 0);
  EXPECT_EQ(editDistance("abc", ""), 3);
  EXPECT_EQ(editDistance("kitten", "sitting"), 3); // replace, replace, insert
  EXPECT_EQ(editDistance("ca", "ac"), 1);          // one swap
  EXPECT_EQ(editDistance("Gaussian", "gaussian"), 0);
}

TEST(Suggest, FindsASlipOfTheHand) {
  const std::vector<std::string> names{"exponential", "gaussian", "linear"};
  EXPECT_EQ(nearest("gausian", names), "gaussian");
  EXPECT_EQ(nearest("lineaar", names), "linear");
  EXPECT_EQ(didYouMean("gausian", names), "did you mean \"gaussian\"?");
}

TEST(Suggest, StaysSilentWhenNothingIsNear) {
  const std::vector<std::string> names{"exponential", "gaussian", "linear"};
  EXPECT_EQ(nearest("quark", names), "");
  EXPECT_EQ(nearest("", names), "");
  EXPECT_EQ(nearest("b", {"a", "bb"}), "bb") << "a name of one letter is no slip of another";
  EXPECT_EQ(nearest("x", {"y", "z"}), "");
  EXPECT_EQ(nearest(std::string(100000, 'g'), names), "") << "and costs nothing";
}

TEST(Suggest, ListsAreCutShort) {
  EXPECT_EQ(listed({"a", "b"}), "a, b");
  EXPECT_EQ(listed({"a", "b", "c"}, 2), "a, b, ... (3 in all)");
}

} // namespace
