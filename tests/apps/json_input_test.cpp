#include "json_input.h"

#include "app_support.h"

using namespace app;
using apptest::failureOf;

namespace {

TEST(JsonInput, ReadsADocument) {
  const Json json = parseJson(R"({"a":[1,2.5],"b":{"a":"x"}})", "f.json");
  EXPECT_EQ(json["a"][1], 2.5);
  EXPECT_EQ(json["b"]["a"], "x");
}

TEST(JsonInput, RefusesAKeyThatStandsTwice) {
  const auto failure = failureOf([] { parseJson(R"({"a":1,"b":{"a":2},"a":3})", "f.json"); });
  EXPECT_EQ(failure.code, ExitCode::badInput);
  EXPECT_EQ(failure.text(), "f.json: the key \"a\" stands twice");
}

TEST(JsonInput, RefusesDeepNesting) {
  const std::string deep = std::string(100000, '[') + std::string(100000, ']');
  EXPECT_EQ(failureOf([&] { parseJson(deep, "f.json"); }).text(),
            "f.json: JSON that nests too deep");
  std::string objects;
  for (int i = 0; i < 100; ++i)
    objects += "{\"a\":";
  EXPECT_EQ(failureOf([&] { parseJson(objects, "f.json"); }).text(),
            "f.json: JSON that nests too deep");
  const std::string allowed = std::string(20, '[') + std::string(20, ']');
  EXPECT_NO_THROW(parseJson(allowed, "f.json"));
}

TEST(JsonInput, RefusesWhatIsNoJson) {
  for (const char* text : {"", "{", "[1,]", "nul", "{\"a\":1} x", "\xff"})
    EXPECT_EQ(failureOf([&] { parseJson(text, "f.json"); }).code, ExitCode::badInput) << text;
}

} // namespace
