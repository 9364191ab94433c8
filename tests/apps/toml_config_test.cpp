#include "toml_config.h"

#include <gmock/gmock.h>
#include <sstream>

using ::testing::ElementsAre;

namespace {

std::string joined(const std::string& text) {
  std::istringstream in(text);
  return app::joinedToml(in);
}

/// The values of the only entry.
std::vector<std::string> values(const std::string& text) {
  std::istringstream in(text);
  const auto items = app::TomlConfig().from_config(in);
  return items.size() == 1 ? items[0].inputs : std::vector<std::string>{"not one entry"};
}

TEST(TomlConfig, ArraysGoOverManyLines) {
  const std::string text = "input = [\n  \"a=1:2\",  # the first\n\n  \"b=3:4\",\n]\n";
  EXPECT_THAT(values(text), ElementsAre("a=1:2", "b=3:4"));
}

TEST(TomlConfig, CommentsEndALineButNotInQuotes) {
  EXPECT_EQ(joined("a = 1 # one\n# none\nb = \"x # y\"\n"), "a = 1 \n\nb = \"x # y\"\n");
  EXPECT_THAT(values("command = \"sim #1 {points}\" # words\n"), ElementsAre("sim #1 {points}"));
}

TEST(TomlConfig, BracketsOfSectionsAndInQuotesAreNoArrays) {
  EXPECT_EQ(joined("[refine]\na = \"[\"\nb = 1\n"), "[refine]\na = \"[\"\nb = 1\n");
}

TEST(TomlConfig, TextsMayHoldCommasAndOtherQuotes) {
  EXPECT_THAT(values("outputs = \"y,z\"\n"), ElementsAre("y,z"));
  EXPECT_THAT(values("command = \"sim 'a b' c\"\n"), ElementsAre("sim 'a b' c"));
}

} // namespace
