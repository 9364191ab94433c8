#include "points_output.h"

#include "number.h"

#include <cmath>

namespace app {

namespace {

constexpr std::size_t blockSize = 1 << 18;

class CsvPoints : public PointsOutput {
public:
  explicit CsvPoints(OutputFile& output) : writer_(output) {}

  void begin(const std::vector<std::string>& names) override { writer_.header(names); }

  void row(const std::vector<double>& values) override {
    for (const double value : values)
      writer_.field(value);
    writer_.endRow();
  }

  void end(long long, const Failure*) override { writer_.flush(); }

private:
  CsvWriter writer_;
};

class JsonPoints : public PointsOutput {
public:
  explicit JsonPoints(OutputFile& output) : output_(output) {}

  void begin(const std::vector<std::string>& names) override {
    Json head = newReport("predict");
    head["columns"] = names;
    buffer_ = head.dump(-1, ' ', false, Json::error_handler_t::replace);
    buffer_.pop_back(); // the document goes on
    buffer_ += ",\"rows\":[";
  }

  void row(const std::vector<double>& values) override {
    buffer_ += first_ ? "\n[" : ",\n[";
    first_ = false;
    bool comma = false;
    for (const double value : values) {
      if (comma) buffer_ += ',';
      comma = true;
      if (std::isfinite(value))
        appendNumber(buffer_, value);
      else
        buffer_ += "null";
    }
    buffer_ += ']';
    if (buffer_.size() >= blockSize) flush();
  }

  void end(long long rows, const Failure* failure) override {
    buffer_ += "\n],\"points\":" + std::to_string(rows);
    if (failure)
      buffer_ += ",\"error\":" +
                 errorReport(*failure).dump(-1, ' ', false, Json::error_handler_t::replace);
    buffer_ += "}\n";
    flush();
  }

private:
  void flush() {
    output_.write(buffer_);
    buffer_.clear();
  }

  OutputFile& output_;
  std::string buffer_;
  bool first_ = true;
};

} // namespace

std::unique_ptr<PointsOutput> csvPoints(OutputFile& output) {
  return std::make_unique<CsvPoints>(output);
}

std::unique_ptr<PointsOutput> jsonPoints(OutputFile& output) {
  return std::make_unique<JsonPoints>(output);
}

} // namespace app
