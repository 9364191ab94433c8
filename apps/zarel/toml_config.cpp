#include "toml_config.h"

#include <sstream>

namespace app {

namespace {

bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

/// Takes a file character by character, and knows whether it stands in quotes or in an array.
class Joiner {
public:
  void take(char c) {
    if (comment_ && c != '\n') return;
    if (c == '\n')
      endLine();
    else if (quote_)
      inQuotes(c);
    else
      outside(c);
  }

  std::string result() const { return out_; }

private:
  void endLine() {
    comment_ = false;
    quote_ = 0; // texts of several lines are not among the values of options
    out_ += depth_ > 0 ? ' ' : '\n';
    if (depth_ == 0) value_ = false;
  }

  void inQuotes(char c) {
    if (c == quote_) quote_ = 0;
    out_ += c;
  }

  void outside(char c) {
    if (c == '#') {
      comment_ = true;
      return;
    }
    if (c == '"' || c == '\'') quote_ = c;
    if (c == '=') value_ = true;
    if (c == '[' && value_) ++depth_;
    if (c == ']' && depth_ > 0) closeArray();
    out_ += c;
  }

  void closeArray() {
    --depth_;
    while (!out_.empty() && isBlank(out_.back()))
      out_.pop_back();
    if (!out_.empty() && out_.back() == ',') out_.pop_back();
  }

  std::string out_;
  char quote_ = 0;
  bool comment_ = false;
  bool value_ = false; ///< behind the `=` of an entry; brackets before it name a section
  int depth_ = 0;      ///< of arrays
};

} // namespace

std::string joinedToml(std::istream& input) {
  Joiner joiner;
  for (char c; input.get(c);)
    joiner.take(c);
  return joiner.result();
}

TomlConfig::TomlConfig() {
  comment('\x01'); // comments are gone when CLI11 looks, and a # that is left stands in quotes
}

std::vector<CLI::ConfigItem> TomlConfig::from_config(std::istream& input) const {
  std::istringstream joined(joinedToml(input));
  return CLI::ConfigTOML::from_config(joined);
}

} // namespace app
