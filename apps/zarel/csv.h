/**
 * @file csv.h
 * Comma separated values, read and written as streams in bounded memory.
 *
 * Reading follows RFC 4180 and is generous where files differ in practice: a byte order mark,
 * LF or CRLF, comma, semicolon or tab (found out from the first record), quoted fields with
 * doubled quotes and line breaks, lines that begin with `#` and blank lines skipped. The first
 * record holds the names of the columns, unless all its fields are numbers.
 */
#ifndef ZAREL_APP_CSV_H
#define ZAREL_APP_CSV_H

#include "failure.h"
#include "output_file.h"

#include <string>
#include <string_view>
#include <vector>

namespace app {

/** Reads records one after the other. Errors: `Failure`, code `io` or `badInput` with the place. */
class CsvReader {
public:
  /** Opens the file, or standard input for `-`, and reads the header. */
  explicit CsvReader(const std::string& path);
  CsvReader(const CsvReader&) = delete;
  CsvReader& operator=(const CsvReader&) = delete;
  ~CsvReader();

  const std::string& file() const { return name_; }
  char delimiter() const { return delimiter_; }
  bool hasHeader() const { return hasHeader_; }
  /** One name a column; a column without a name is "column_N", N counting from 1. */
  const std::vector<std::string>& names() const { return names_; }

  /** Goes to the next data row; false at the end. A row of another length than the header throws.
   */
  bool next();
  /** Fields of the present row, unquoted; they live until the next call of `next`. */
  const std::vector<std::string_view>& fields() const { return fields_; }
  /** Field `column` as a finite number, or a failure that names the place. */
  double number(std::size_t column) const;

  /** Data rows seen so far; the present row's number, counting from 1. */
  long long row() const { return row_; }
  Place place(std::size_t column) const;
  Place place() const;

  /** For progress: bytes consumed, and the size of the file or 0 if it has none. */
  double bytesDone() const { return static_cast<double>(consumed_ + begin_); }
  double bytesTotal() const { return static_cast<double>(size_); }

private:
  /** A field as offsets from begin_, since the buffer moves when it is refilled. */
  struct Span {
    std::size_t from, to;
  };

  bool nextRecord();
  bool findLine(std::size_t& length);
  void splitPlain(char* line, std::size_t length);
  void splitQuoted();
  bool has(std::size_t i);
  char& at(std::size_t i) { return buffer_[begin_ + i]; }
  bool endsRecord(std::size_t i);
  Span plainField(std::size_t& i);
  Span quotedField(std::size_t& i);
  bool refill();
  void compact();
  void readHeader();
  void skipByteOrderMark();
  void detectDelimiter(std::string_view line);
  std::string_view line(std::size_t length) const { return {buffer_.data() + begin_, length}; }
  [[noreturn]] void fail(const std::string& what, const std::string& hint) const;

  std::string name_;
  int fd_ = -1;
  long long size_ = 0;
  std::vector<char> buffer_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  long long consumed_ = 0;
  bool atEnd_ = false;
  char delimiter_ = 0; ///< 0 until it was found out
  bool hasHeader_ = false;
  bool pending_ = false; ///< the first record is data and was not handed out yet
  std::vector<std::string> names_;
  std::vector<std::string_view> fields_;
  std::vector<Span> spans_;
  long long row_ = 0;
  long long recordLine_ = 0; ///< line at which the present record begins
  long long nextLine_ = 1;
};

/** Writes records to an output, in blocks. Call `flush` before the output is committed. */
class CsvWriter {
public:
  explicit CsvWriter(OutputFile& output, char delimiter = ',');

  void field(std::string_view text);
  void field(double value);
  void endRow();
  void header(const std::vector<std::string>& names);
  void flush();

private:
  void separate();

  OutputFile& output_;
  std::string buffer_;
  char delimiter_;
  bool rowStarted_ = false;
};

} // namespace app

#endif
