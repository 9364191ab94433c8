#include "json_input.h"

#include <set>
#include <vector>

namespace app {

namespace {

constexpr int deepest = 32;

[[noreturn]] void refuse(const std::string& what, const std::string& file) {
  Place place;
  place.file = file;
  throw Failure(ExitCode::badInput, what, "", place);
}

/** Sees each token while the text is parsed. */
class Guard {
public:
  explicit Guard(const std::string& file) : file_(file) {}

  bool operator()(int depth, Json::parse_event_t event, Json& value) {
    if (depth > deepest) refuse("JSON that nests too deep", file_);
    if (event == Json::parse_event_t::object_start) keys_.emplace_back();
    if (event == Json::parse_event_t::object_end) keys_.pop_back();
    if (event == Json::parse_event_t::key) {
      const auto key = value.get<std::string>();
      if (!keys_.back().insert(key).second) refuse("the key \"" + key + "\" stands twice", file_);
    }
    return true;
  }

private:
  const std::string& file_;
  std::vector<std::set<std::string>> keys_;
};

} // namespace

Json parseJson(std::string_view text, const std::string& file) {
  try {
    Guard guard(file);
    return Json::parse(text.begin(), text.end(), std::ref(guard));
  } catch (const Json::exception& error) {
    refuse(std::string("not valid JSON: ") + error.what(), file);
  }
}

} // namespace app
