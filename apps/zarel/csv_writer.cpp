#include "csv.h"
#include "number.h"

namespace app {

namespace {

constexpr std::size_t blockSize = 1 << 18;

bool needsQuotes(std::string_view text, char delimiter) {
  if (text.empty()) return false;
  if (text.front() == '#' || text.front() == ' ' || text.back() == ' ') return true;
  return text.find_first_of("\"\r\n") != text.npos || text.find(delimiter) != text.npos;
}

} // namespace

CsvWriter::CsvWriter(OutputFile& output, char delimiter) : output_(output), delimiter_(delimiter) {
  buffer_.reserve(blockSize + 4096);
}

void CsvWriter::separate() {
  if (rowStarted_) buffer_ += delimiter_;
  rowStarted_ = true;
}

void CsvWriter::field(std::string_view text) {
  separate();
  if (!needsQuotes(text, delimiter_)) {
    buffer_ += text;
    return;
  }
  buffer_ += '"';
  for (const char c : text) {
    if (c == '"') buffer_ += '"';
    buffer_ += c;
  }
  buffer_ += '"';
}

void CsvWriter::field(double value) {
  separate();
  appendNumber(buffer_, value);
}

void CsvWriter::endRow() {
  buffer_ += '\n';
  rowStarted_ = false;
  if (buffer_.size() >= blockSize) flush();
}

void CsvWriter::header(const std::vector<std::string>& names) {
  for (const auto& name : names)
    field(name);
  endRow();
}

void CsvWriter::flush() {
  output_.write(buffer_);
  buffer_.clear();
}

} // namespace app
