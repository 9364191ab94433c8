#include "command.h"

#include "failure.h"

#include <algorithm>

namespace app::refine {
namespace {

bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// Reads words off a command, one character at a time.
class Splitter {
public:
  explicit Splitter(const std::string& text) : text_(text) {}

  std::vector<std::string> words() {
    for (; at_ < text_.size(); ++at_)
      step(text_[at_]);
    if (quote_) fail("has an open quote");
    endWord();
    if (words_.empty()) fail("is empty");
    return words_;
  }

private:
  [[noreturn]] static void fail(const char* what) {
    throw Failure(ExitCode::usage, std::string("the simulation command ") + what);
  }

  void step(char c) {
    if (c == '\\' && quote_ != '\'')
      escape();
    else if (quote_)
      c == quote_ ? void(quote_ = 0) : keep(c);
    else if (c == '\'' || c == '"')
      begin(c);
    else if (isBlank(c))
      endWord();
    else
      keep(c);
  }

  void begin(char quote) {
    quote_ = quote;
    inWord_ = true;
  }

  void escape() {
    if (++at_ >= text_.size()) fail("ends with a backslash");
    keep(text_[at_]);
  }

  void keep(char c) {
    word_ += c;
    inWord_ = true;
  }

  void endWord() {
    if (inWord_) words_.push_back(word_);
    word_.clear();
    inWord_ = false;
  }

  const std::string& text_;
  std::size_t at_ = 0;
  char quote_ = 0;
  bool inWord_ = false;
  std::string word_;
  std::vector<std::string> words_;
};

std::string fill(const std::string& word, const Placeholders& values) {
  std::string filled;
  for (std::size_t at = 0; at < word.size();) {
    const auto match = std::find_if(values.begin(), values.end(), [&](const auto& value) {
      return word.compare(at, value.first.size() + 2, '{' + value.first + '}') == 0;
    });
    if (match == values.end()) {
      filled += word[at++];
    } else {
      filled += match->second;
      at += match->first.size() + 2;
    }
  }
  return filled;
}

bool mentions(const std::vector<std::string>& words, const char* placeholder) {
  return std::any_of(words.begin(), words.end(), [&](const std::string& word) {
    return word.find(placeholder) != std::string::npos;
  });
}

bool isPlain(const std::string& word) {
  const char* const safe =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-./=:,+@%";
  return !word.empty() && word.find_first_not_of(safe) == std::string::npos;
}

} // namespace

std::vector<std::string> splitCommand(const std::string& command) {
  return Splitter(command).words();
}

std::vector<std::string> fillPlaceholders(const std::vector<std::string>& words,
                                          const Placeholders& values) {
  std::vector<std::string> filled;
  for (const std::string& word : words)
    filled.push_back(fill(word, values));
  return filled;
}

std::vector<std::string> withFileArguments(std::vector<std::string> words) {
  const bool points = mentions(words, "{points}"), results = mentions(words, "{results}");
  if (points != results)
    throw Failure(ExitCode::usage,
                  std::string("the simulation command has no ") +
                      (points ? "{results}" : "{points}"),
                  "give both {points} and {results}, or neither: they are then appended");
  if (!points) {
    words.emplace_back("{points}");
    words.emplace_back("{results}");
  }
  return words;
}

std::string quoteWords(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) {
    if (!line.empty()) line += ' ';
    if (isPlain(word)) {
      line += word;
      continue;
    }
    line += '\'';
    for (char c : word)
      c == '\'' ? line += "'\\''" : line += c;
    line += '\'';
  }
  return line;
}

} // namespace app::refine
