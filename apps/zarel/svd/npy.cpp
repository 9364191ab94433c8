#include "svd/npy.h"

#include "failure.h"

#include <cctype>
#include <charconv>

namespace app {

namespace {

constexpr std::string_view magic = "\x93NUMPY";

/** Walks over the text of a head: a Python dictionary of three known keys. */
class HeadText {
public:
  HeadText(std::string_view text, const std::string& file) : text_(text), file_(file) {}

  NpyHead read() {
    NpyHead head;
    expect('{');
    while (peek() != '}') {
      entry(head);
      separator('}');
    }
    if (!type_ || !order_ || !shape_) fail("its head lacks a key");
    return head;
  }

private:
  [[noreturn]] void fail(const std::string& what) const {
    throw Failure(ExitCode::badInput, "no .npy file that can be read: " + what, "",
                  Place{file_, 0, 0, 0, ""});
  }
  /** The next character that is no blank. */
  char peek() {
    while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_])) != 0)
      ++at_;
    if (at_ == text_.size()) fail("its head ends early");
    return text_[at_];
  }
  void expect(char wanted) {
    if (peek() != wanted) fail(std::string("its head has no '") + wanted + "' where one belongs");
    ++at_;
  }
  /** A comma, which the last of a list need not have behind it. */
  void separator(char end) {
    if (peek() != end) expect(',');
  }
  std::string quoted() {
    const char quote = peek();
    if (quote != '\'' && quote != '"') fail("its head has no text where one belongs");
    const std::size_t end = text_.find(quote, ++at_);
    if (end == std::string_view::npos) fail("its head ends early");
    std::string word(text_.substr(at_, end - at_));
    at_ = end + 1;
    return word;
  }
  std::string word() {
    peek();
    std::size_t end = at_;
    while (end < text_.size() && std::isalpha(static_cast<unsigned char>(text_[end])) != 0)
      ++end;
    std::string result(text_.substr(at_, end - at_));
    at_ = end;
    return result;
  }
  long long count() {
    peek();
    long long value = 0;
    const char* const end = text_.data() + text_.size();
    const auto [rest, error] = std::from_chars(text_.data() + at_, end, value);
    if (error != std::errc() || value < 0) fail("its shape is no list of counts");
    at_ = static_cast<std::size_t>(rest - text_.data());
    return value;
  }
  void entry(NpyHead& head) {
    const std::string key = quoted();
    expect(':');
    if (key == "descr")
      once(type_, key), readType(head);
    else if (key == "fortran_order")
      once(order_, key), readOrder(head);
    else if (key == "shape")
      once(shape_, key), readShape(head);
    else
      fail("its head has the unknown key \"" + key + "\"");
  }
  void once(bool& seen, const std::string& key) const {
    if (seen) fail("its head has the key \"" + key + "\" twice");
    seen = true;
  }
  void readType(NpyHead& head) {
    if (peek() == '[') fail("its elements are records");
    head.type = quoted();
  }
  void readOrder(NpyHead& head) {
    const std::string value = word();
    if (value != "True" && value != "False") fail("its order is neither True nor False");
    head.columnOrder = value == "True";
  }
  void readShape(NpyHead& head) {
    expect('(');
    while (peek() != ')') {
      head.shape.push_back(count());
      separator(')');
    }
    ++at_;
  }

  std::string_view text_;
  const std::string& file_;
  std::size_t at_ = 0;
  bool type_ = false, order_ = false, shape_ = false;
};

std::size_t littleEndian(std::string_view bytes) {
  std::size_t value = 0;
  for (std::size_t i = bytes.size(); i-- > 0;)
    value = 256 * value + static_cast<unsigned char>(bytes[i]);
  return value;
}

} // namespace

bool isNpy(std::string_view bytes) {
  return bytes.substr(0, magic.size()) == magic;
}

NpyHead parseNpyHead(std::string_view bytes, const std::string& file) {
  const auto refuse = [&file](const std::string& what) -> Failure {
    return {ExitCode::badInput, what, "", Place{file, 0, 0, 0, ""}};
  };
  if (!isNpy(bytes) || bytes.size() < 12) throw refuse("not a .npy file");
  const int version = bytes[6];
  if (version < 1 || version > 3)
    throw refuse("a .npy file of version " + std::to_string(version) + ", which is not known");
  const std::size_t lengthBytes = version == 1 ? 2 : 4, textAt = 8 + lengthBytes;
  const std::size_t length = littleEndian(bytes.substr(8, lengthBytes));
  if (length > bytes.size() - textAt) throw refuse("the head of the .npy file is cut off");
  NpyHead head = HeadText(bytes.substr(textAt, length), file).read();
  head.dataOffset = textAt + length;
  return head;
}

} // namespace app
