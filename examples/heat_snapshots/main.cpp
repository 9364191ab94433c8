// The heat study's own program: it simulates, and it checks what a decomposition kept.
//
//   heat_snapshots simulate --points N --memory BYTES OUT.set
//       writes snapshots of an N x N plate to a vector set file, as many as make it four times as
//       large as the memory that it may take itself
//   heat_snapshots check SNAPSHOTS.set BASIS.set COEFFICIENTS.csv VALUES.csv
//       rebuilds every snapshot, and compares what is missing with the table's estimate
//   heat_snapshots draw BASIS.set OUT.svg
//       pictures of the first six vectors of the basis
#include "heat.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <zarel/C_ZarelException.h>
#include <zarel/bf.h>
#include <zarel/itf.h>

namespace {

using heat::Field;
using heat::Line;
using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;
using Table = std::vector<std::vector<double>>;

struct Usage : std::runtime_error {
  using std::runtime_error::runtime_error;
};

void require(bool holds, const std::string& otherwise) {
  if (!holds) throw std::runtime_error(otherwise);
}

File openFile(const std::string& name, const char* mode) {
  File file(std::fopen(name.c_str(), mode), &std::fclose);
  require(file != nullptr, "cannot open " + name);
  return file;
}

double number(const std::string& text) {
  double value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end) throw Usage("\"" + text + "\" is not a number");
  return value;
}

// Simulation.

struct Size {
  int points = 0;
  int snapshots = 0;
};

/// Four times the memory, in whole snapshots.
Size sizeOf(double points, double memory) {
  if (!(points >= 2 && points <= 20000)) throw Usage("--points is a number from 2 to 20000");
  const double snapshots = std::ceil(4 * memory / (8 * points * points));
  if (!(snapshots >= 4 && snapshots <= 100000))
    throw Usage("--memory is four snapshots or more, and 100000 or fewer");
  return {static_cast<int>(points), static_cast<int>(snapshots)};
}

/// Two turns of the spot, whatever the number of snapshots.
void simulate(const Size& size, const std::string& name) {
  constexpr int stepsBetween = 4;
  const heat::Spot spot;
  const double step = 2 * spot.turn / (stepsBetween * size.snapshots);
  heat::Plate plate(size.points, step, spot);
  const File file = openFile(name, "wb");
  const int length = size.points * size.points;
  int counts[] = {size.snapshots, length};
  require(BF_fwrite_int(file.get(), counts, 2) == 0, "cannot write " + name);
  for (int k = 0; k < size.snapshots; ++k) {
    for (int i = 0; i < stepsBetween; ++i)
      require(plate.advance() == 0, "the tridiagonal solver failed");
    require(BF_fwrite_double(file.get(), plate.temperature().Adr(), length) == 0,
            "cannot write " + name);
  }
  require(std::fflush(file.get()) == 0, "cannot write " + name);
  std::printf("%d snapshots of %d temperatures, %.1f MiB, in %s\n", size.snapshots, length,
              8.0 * size.snapshots * length / 1048576, name.c_str());
}

// Vector set files, a vector at a time.

class SetReader {
public:
  explicit SetReader(const std::string& name) : name_(name), file_(openFile(name, "rb")) {
    int counts[2] = {0, 0};
    require(BF_fread_int(file_.get(), counts, 2) == 0 && counts[0] > 0 && counts[1] > 0,
            name + " is no vector set file");
    count_ = counts[0];
    length_ = counts[1];
    const auto size = static_cast<double>(std::filesystem::file_size(name));
    require(size == 8 + 8.0 * count_ * length_, name + " does not hold what its head tells");
  }
  int count() const { return count_; }
  int length() const { return length_; }
  void next(double* values) {
    require(BF_fread_double(file_.get(), values, length_) == 0, name_ + " ends early");
  }

private:
  std::string name_;
  File file_;
  int count_ = 0, length_ = 0;
};

Field readAll(const std::string& name) {
  SetReader reader(name);
  Field all(reader.length(), reader.count());
  for (int j = 0; j < reader.count(); ++j)
    reader.next(all[j]);
  return all;
}

Table readCsv(const std::string& name) {
  std::ifstream file(name);
  std::string line, cell;
  std::getline(file, line);
  Table rows;
  while (std::getline(file, line)) {
    rows.emplace_back();
    std::istringstream cells(line);
    while (std::getline(cells, cell, ','))
      rows.back().push_back(number(cell));
  }
  require(!rows.empty(), name + " holds no rows");
  return rows;
}

// The check: the Frobenius norm of what is missing is at most the sum of the dropped singular
// values, which is the table's entry times the sum of all.

int check(const std::string& snapshots, const std::string& basisName,
          const std::string& coefficientsName, const std::string& valuesName) {
  Field basis = readAll(basisName);
  const Table coefficients = readCsv(coefficientsName), values = readCsv(valuesName);
  SetReader reader(snapshots);
  const int kept = basis.NbCol();
  require(reader.length() == basis.NbRow() &&
              coefficients.size() == static_cast<std::size_t>(reader.count()) &&
              values.size() >= static_cast<std::size_t>(kept),
          "the files do not belong together");
  Line snapshot(reader.length());
  double missing = 0, whole = 0, sum = 0;
  for (const std::vector<double>& row : coefficients) {
    reader.next(snapshot.Adr(0));
    whole += snapshot * snapshot;
    ITF_dgemv(const_cast<char*>("N"), basis.NbRow(), kept, -1.0, basis.Adr(), basis.NbRow(),
              const_cast<double*>(row.data()), 1, 1.0, snapshot.Adr(0), 1);
    missing += snapshot * snapshot;
  }
  for (const std::vector<double>& row : values)
    sum += row.at(1);
  const double estimate = values[static_cast<std::size_t>(kept) - 1].at(2) * sum;
  const double rounding = 1e-12 * std::sqrt(whole);
  std::printf("kept %d of %d vectors\nmissing %.3e, estimate %.3e, of %.3e\n", kept, reader.count(),
              std::sqrt(missing), estimate, std::sqrt(whole));
  const bool holds = std::sqrt(missing) <= estimate + rounding;
  std::printf("the estimate %s\n", holds ? "holds" : "does NOT hold");
  return holds ? 0 : 1;
}

// Pictures: one path a colour, so that a field of squares stays small.

constexpr int squares = 32, colours = 15, gap = 4, shown = 6, perRow = 3;

/// From blue over white to orange.
std::string colourOf(int level) {
  const double t = 2.0 * level / (colours - 1) - 1, pale = 1 - std::fabs(t);
  const int strong[3] = {t < 0 ? 0x25 : 0xc2, t < 0 ? 0x63 : 0x57, t < 0 ? 0xc9 : 0x0c};
  char text[8];
  int mixed[3];
  for (int c = 0; c < 3; ++c)
    mixed[c] = static_cast<int>(strong[c] + pale * (255 - strong[c]));
  std::snprintf(text, sizeof text, "#%02x%02x%02x", mixed[0], mixed[1], mixed[2]);
  return text;
}

std::string pathsOf(const double* field, int points) {
  double largest = 0;
  for (int i = 0; i < points * points; ++i)
    largest = std::max(largest, std::fabs(field[i]));
  std::vector<std::string> paths(colours);
  for (int row = 0; row < squares; ++row)
    for (int column = 0; column < squares; ++column) {
      const int i = column * points / squares, j = (squares - 1 - row) * points / squares;
      const double value = largest > 0 ? field[j * points + i] / largest : 0;
      const auto level = static_cast<std::size_t>(std::lround((value + 1) * 0.5 * (colours - 1)));
      paths[level] += "M" + std::to_string(column) + " " + std::to_string(row) + "h1v1h-1z";
    }
  std::string text;
  for (int level = 0; level < colours; ++level)
    if (const std::string& path = paths[static_cast<std::size_t>(level)]; !path.empty())
      text += "<path fill=\"" + colourOf(level) + "\" d=\"" + path + "\"/>\n";
  return text;
}

int draw(const std::string& basisName, const std::string& pictureName) {
  Field basis = readAll(basisName);
  const int points = static_cast<int>(std::lround(std::sqrt(basis.NbRow())));
  require(points * points == basis.NbRow(), basisName + " holds no square fields");
  const int count = std::min(shown, basis.NbCol()), rows = (count + perRow - 1) / perRow;
  constexpr int pitch = squares + gap;
  std::ofstream file(pictureName);
  file << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"" << -gap << ' ' << -gap << ' '
       << perRow * pitch + gap << ' ' << rows * pitch + gap
       << "\" shape-rendering=\"crispEdges\">\n<title>The first vectors of the basis</title>\n"
       << "<rect x=\"" << -gap << "\" y=\"" << -gap
       << "\" width=\"100%\" height=\"100%\" fill=\"#98a2b3\"/>\n";
  for (int k = 0; k < count; ++k)
    file << "<g transform=\"translate(" << k % perRow * pitch << ' ' << k / perRow * pitch
         << ")\">\n"
         << pathsOf(basis[k], points) << "</g>\n";
  file << "</svg>\n";
  file.flush();
  require(file.good(), "cannot write " + pictureName);
  return 0;
}

int run(const std::vector<std::string>& words) {
  const std::string command = words.empty() ? "" : words.front();
  if (command == "simulate" && words.size() == 6 && words[1] == "--points" &&
      words[3] == "--memory") {
    simulate(sizeOf(number(words[2]), number(words[4])), words[5]);
    return 0;
  }
  if (command == "check" && words.size() == 5) return check(words[1], words[2], words[3], words[4]);
  if (command == "draw" && words.size() == 3) return draw(words[1], words[2]);
  throw Usage("heat_snapshots simulate --points N --memory BYTES OUT.set\n"
              "       heat_snapshots check SNAPSHOTS BASIS COEFFICIENTS.csv VALUES.csv\n"
              "       heat_snapshots draw BASIS OUT.svg");
}

} // namespace

int main(int argc, char** argv) {
  try {
    return run({argv + 1, argv + argc});
  } catch (const Usage& error) {
    std::fprintf(stderr, "usage: %s\n", error.what());
    return 2;
  } catch (const C_ZarelException& error) {
    std::fprintf(stderr, "heat_snapshots: the library failed with code %d\n",
                 static_cast<int>(error.getExceptionCode()));
    return 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "heat_snapshots: %s\n", error.what());
    return 1;
  }
}
