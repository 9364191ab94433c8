// A simulation for tests: y = sin(3 a) + b^2 and z = a b, with faults on request.
//
//   refine_simulation POINTS RESULTS [--log FILE] [--sleep MS] [--FAULT-above A] ...
//
// It appends a line "a,b" to the log for each point that it starts. A fault strikes when a point of
// the file has an `a` above the limit: fail (exit code 3, words on standard error), crash (abort),
// hang (for ever), stubborn (hang, deaf to SIGTERM), child (a grandchild that hangs and holds the
// log's ".child" file), nan, text, endless (a number too long to read), few (a row less), many (a
// row more), none (no file), header (wrong names).
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

struct Point {
  double a, b;
};

std::vector<Point> readPoints(const char* path) {
  std::ifstream in(path);
  std::string line;
  std::getline(in, line);
  if (line != "a,b") std::exit(9);
  std::vector<Point> points;
  while (std::getline(in, line)) {
    Point p{};
    if (std::sscanf(line.c_str(), "%lf,%lf", &p.a, &p.b) != 2) std::exit(9);
    points.push_back(p);
  }
  return points;
}

void log(const std::string& path, const Point& p) {
  char line[128];
  const int length = std::snprintf(line, sizeof line, "%.17g,%.17g\n", p.a, p.b);
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
  if (fd < 0 || write(fd, line, static_cast<size_t>(length)) != length) std::exit(9);
  close(fd);
}

[[noreturn]] void hang() {
  for (;;)
    pause();
}

struct Faults {
  std::map<std::string, double> above;
  double largest = 0; ///< largest a of the file

  bool strikes(const std::string& fault, double a) const {
    const auto limit = above.find(fault);
    return limit != above.end() && a > limit->second;
  }
  bool strikes(const std::string& fault) const { return strikes(fault, largest); }
};

void strikeEarly(const Faults& faults, const std::string& logFile) {
  if (faults.strikes("fail")) {
    std::fprintf(stderr, "some words\nmesh collapsed\n");
    std::exit(3);
  }
  if (faults.strikes("crash")) std::abort();
  if (faults.strikes("stubborn")) {
    std::signal(SIGTERM, SIG_IGN);
    hang();
  }
  if (faults.strikes("child")) {
    const pid_t child = fork();
    if (child == 0) hang();
    std::ofstream(logFile + ".child") << child << std::endl;
  }
  if (faults.strikes("hang")) hang();
  if (faults.strikes("none")) std::exit(0);
}

std::string row(const Point& p, const Faults& faults) {
  std::ostringstream text;
  text.precision(17);
  if (faults.strikes("nan", p.a))
    text << "nan";
  else if (faults.strikes("text", p.a))
    text << "diverged";
  else
    text << p.a * p.b;
  text << ',' << std::sin(3 * p.a) + p.b * p.b << '\n';
  return text.str();
}

void writeResults(const char* path, const std::vector<Point>& points, const Faults& faults) {
  std::ofstream out(path);
  out << (faults.strikes("header") ? "z,w\n" : "z,y\n");
  if (faults.strikes("endless"))
    for (int i = 0; i < 3000000; ++i)
      out << '1';
  size_t rows = points.size() - (faults.strikes("few") ? 1 : 0);
  for (size_t i = 0; i < rows; ++i)
    out << row(points[i], faults);
  if (faults.strikes("many")) out << row(points[0], faults);
}

} // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 9;
  std::string logFile;
  int milliseconds = 0;
  Faults faults;
  for (int i = 3; i + 1 < argc; i += 2) {
    const std::string name = argv[i];
    const auto tail = name.find("-above");
    if (name == "--log")
      logFile = argv[i + 1];
    else if (name == "--sleep")
      milliseconds = std::atoi(argv[i + 1]);
    else if (tail != std::string::npos)
      faults.above[name.substr(2, tail - 2)] = std::atof(argv[i + 1]);
    else
      return 9;
  }
  const auto points = readPoints(argv[1]);
  for (const Point& p : points) {
    faults.largest = std::fmax(faults.largest, p.a);
    if (!logFile.empty()) log(logFile, p);
    usleep(static_cast<useconds_t>(1000 * milliseconds));
  }
  strikeEarly(faults, logFile);
  writeResults(argv[2], points, faults);
  return 0;
}
