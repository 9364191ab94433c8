#include "csv.h"
#include "interrupt.h"
#include "number.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace app {

namespace {

constexpr std::size_t blockSize = 1 << 18;
/** A record longer than this is an open quote or no CSV at all. */
constexpr std::size_t longestRecord = 1 << 26;

bool isBlankLine(std::string_view line, char delimiter) {
  return std::all_of(line.begin(), line.end(), [delimiter](char c) {
    return (c == ' ' || c == '\t' || c == '\r') && c != delimiter;
  });
}

std::size_t countUnquoted(std::string_view text, char wanted) {
  std::size_t count = 0;
  bool quoted = false;
  for (const char c : text) {
    if (c == '"') quoted = !quoted;
    if (c == wanted && !quoted) ++count;
  }
  return count;
}

std::string quoted(std::string_view text) {
  constexpr std::size_t limit = 60;
  return "\"" + std::string(text.substr(0, limit)) + (text.size() > limit ? "..." : "") + "\"";
}

bool looksLikeNumber(std::string_view text) {
  double value = 0;
  return parseNumber(text, value) != NumberStatus::notANumber;
}

/** "1,5": a decimal comma, as spreadsheets of many countries write it. */
bool hasDecimalComma(std::string_view text) {
  std::string point(text);
  std::replace(point.begin(), point.end(), ',', '.');
  double value = 0;
  return point != text && parseNumber(point, value) == NumberStatus::ok;
}

} // namespace

CsvReader::CsvReader(const std::string& path)
    : name_(path == "-" ? "standard input" : path), buffer_(blockSize) {
  fd_ = path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd_ < 0) failIo("cannot read \"" + path + "\"", errno);
  struct stat info {};
  if (fstat(fd_, &info) == 0 && S_ISREG(info.st_mode)) size_ = info.st_size;
  try {
    skipByteOrderMark();
    readHeader();
  } catch (...) {
    if (fd_ != STDIN_FILENO) close(fd_);
    throw;
  }
}

CsvReader::~CsvReader() {
  if (fd_ != STDIN_FILENO) close(fd_);
}

void CsvReader::fail(const std::string& what, const std::string& hint) const {
  throw Failure(ExitCode::badInput, what, hint, place());
}

Place CsvReader::place() const {
  Place where;
  where.file = name_;
  where.line = recordLine_;
  where.row = row_;
  return where;
}

Place CsvReader::place(std::size_t column) const {
  Place where = place();
  where.column = static_cast<long long>(column) + 1;
  if (column < names_.size()) where.name = names_[column];
  return where;
}

void CsvReader::compact() {
  if (begin_ == 0) return;
  std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
  consumed_ += static_cast<long long>(begin_);
  end_ -= begin_;
  begin_ = 0;
}

/** Reads more bytes behind those that are left; false at the end of the file. */
bool CsvReader::refill() {
  if (atEnd_) return false;
  compact();
  if (end_ == buffer_.size()) {
    if (buffer_.size() >= longestRecord)
      fail("a record of more than 64 MiB", "a quote that is never closed, or not a CSV file");
    buffer_.resize(buffer_.size() * 2);
  }
  ssize_t got = 0;
  while ((got = read(fd_, buffer_.data() + end_, buffer_.size() - end_)) < 0) {
    if (errno != EINTR) failIo("cannot read " + quoted(name_), errno);
    interrupt::check("");
  }
  end_ += static_cast<std::size_t>(got);
  atEnd_ = got == 0;
  return !atEnd_;
}

void CsvReader::skipByteOrderMark() {
  while (end_ - begin_ < 3 && refill()) {
  }
  const auto start = line(end_ - begin_);
  recordLine_ = 1;
  if (start.substr(0, 2) == "\xFF\xFE" || start.substr(0, 2) == "\xFE\xFF")
    fail("the file is UTF-16 text", "save it as UTF-8");
  if (start.substr(0, 3) == "\xEF\xBB\xBF") begin_ += 3;
}

void CsvReader::detectDelimiter(std::string_view line) {
  delimiter_ = ',';
  std::size_t most = countUnquoted(line, ',');
  for (const char candidate : {';', '\t'}) {
    const std::size_t count = countUnquoted(line, candidate);
    if (count <= most) continue;
    most = count;
    delimiter_ = candidate;
  }
}

void CsvReader::readHeader() {
  if (!nextRecord()) {
    recordLine_ = 0;
    fail("the file is empty", "a line of column names, then a row a point");
  }
  hasHeader_ = !std::all_of(fields_.begin(), fields_.end(), looksLikeNumber);
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    const auto name = trimmed(fields_[i]);
    names_.push_back(hasHeader_ && !name.empty() ? std::string(name)
                                                 : "column_" + std::to_string(i + 1));
  }
  pending_ = !hasHeader_;
}

bool CsvReader::next() {
  if (pending_) {
    pending_ = false;
    row_ = 1;
    return true;
  }
  if (!nextRecord()) return false;
  ++row_;
  if (fields_.size() != names_.size())
    fail(std::to_string(fields_.size()) + " fields, where the first line has " +
             std::to_string(names_.size()),
         "every row needs one field a column; a field that holds the separator needs quotes");
  return true;
}

double CsvReader::number(std::size_t column) const {
  double value = 0;
  const auto text = fields_[column];
  const auto status = parseNumber(text, value);
  if (status == NumberStatus::ok) return value;
  std::string what = quoted(text) + " is not a number";
  std::string hint = "mend the field or take the row out";
  if (trimmed(text).empty()) what = "the field is empty";
  if (status == NumberStatus::outOfRange) what = quoted(text) + " is beyond double precision";
  if (status == NumberStatus::notFinite) what = quoted(text) + " is not a finite number";
  if (hasDecimalComma(text)) hint = "write a decimal point, not a comma";
  throw Failure(ExitCode::badInput, what, hint, place(column));
}

/** Finds the end of the line at begin_, reading on as needed; false at the end of the file. */
bool CsvReader::findLine(std::size_t& length) {
  std::size_t searched = 0;
  for (;;) {
    const char* start = buffer_.data() + begin_;
    const std::size_t held = end_ - begin_;
    const void* found = std::memchr(start + searched, '\n', held - searched);
    if (found) {
      length = static_cast<std::size_t>(static_cast<const char*>(found) - start);
      return true;
    }
    searched = held;
    if (!refill()) break;
  }
  length = end_ - begin_;
  return length > 0;
}

bool CsvReader::nextRecord() {
  std::size_t length = 0;
  for (;;) {
    if (!findLine(length)) return false;
    recordLine_ = nextLine_;
    const auto text = line(length);
    if (text.empty() || text.front() != '#') {
      if (!isBlankLine(text, delimiter_)) break;
    }
    ++nextLine_;
    begin_ = std::min(end_, begin_ + length + 1);
  }
  if (delimiter_ == 0) detectDelimiter(line(length));
  fields_.clear();
  if (std::memchr(buffer_.data() + begin_, '"', length)) {
    splitQuoted();
    return true;
  }
  splitPlain(buffer_.data() + begin_, length);
  ++nextLine_;
  begin_ = std::min(end_, begin_ + length + 1);
  return true;
}

/** Splits a line that holds no quote. */
void CsvReader::splitPlain(char* start, std::size_t length) {
  if (length > 0 && start[length - 1] == '\r') --length;
  const char* const stop = start + length;
  const char* from = start;
  while (const void* found = std::memchr(from, delimiter_, static_cast<std::size_t>(stop - from))) {
    const char* to = static_cast<const char*>(found);
    fields_.emplace_back(from, static_cast<std::size_t>(to - from));
    from = to + 1;
  }
  fields_.emplace_back(from, static_cast<std::size_t>(stop - from));
}

/** True if the record goes on at least up to byte `i`, which is read if need be. */
bool CsvReader::has(std::size_t i) {
  while (begin_ + i >= end_) {
    if (!refill()) return false;
  }
  return true;
}

bool CsvReader::endsRecord(std::size_t i) {
  return !has(i) || at(i) == '\n';
}

/** A field without quotes at its start; leaves `i` behind it. */
CsvReader::Span CsvReader::plainField(std::size_t& i) {
  Span span{i, i};
  while (!endsRecord(i) && at(i) != delimiter_)
    ++i;
  span.to = i;
  if (endsRecord(i) && i > span.from && at(i - 1) == '\r') --span.to;
  return span;
}

/** A quoted field, unquoted where it stands, which only makes it shorter. */
CsvReader::Span CsvReader::quotedField(std::size_t& i) {
  const char* hint = "double a quote inside a quoted field";
  Span span{i + 1, i + 1};
  for (++i;; ++i) {
    if (!has(i)) fail("a quote that is never closed", hint);
    if (at(i) == '"') {
      if (!has(i + 1) || at(i + 1) != '"') break;
      ++i;
    }
    if (at(i) == '\n') ++nextLine_;
    at(span.to++) = at(i);
  }
  ++i;
  if (has(i) && at(i) == '\r' && endsRecord(i + 1)) ++i;
  if (!endsRecord(i) && at(i) != delimiter_) fail("text after a closing quote", hint);
  return span;
}

/** Splits a record that holds quotes and may go over several lines. */
void CsvReader::splitQuoted() {
  spans_.clear();
  std::size_t i = 0;
  for (bool more = true; more; ++i) {
    spans_.push_back(has(i) && at(i) == '"' ? quotedField(i) : plainField(i));
    more = !endsRecord(i);
  }
  ++nextLine_;
  for (const auto& span : spans_)
    fields_.emplace_back(buffer_.data() + begin_ + span.from, span.to - span.from);
  begin_ = std::min(end_, begin_ + i);
}

} // namespace app
