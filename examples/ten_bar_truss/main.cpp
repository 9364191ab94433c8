// The simulation of the ten-bar truss study: a program that knows nothing of who calls it.
//
//   ten_bar_truss POINTS.csv RESULTS.csv     areas in (a1 ... a10, in^2), one row a design;
//                                            weight, max_stress, tip_displacement out
//   ten_bar_truss --sample N --seed S [--bounds LOW HIGH]
//                                            N random designs with their results on standard output
#include "truss.h"

#include <charconv>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <zarel/C_RandNum.h>

namespace {

const char* const Inputs = "a1,a2,a3,a4,a5,a6,a7,a8,a9,a10";
const char* const Outputs = "weight,max_stress,tip_displacement";

const char* const UsageText = "usage: ten_bar_truss POINTS.csv RESULTS.csv\n"
                              "       ten_bar_truss --sample N [--seed S] [--bounds LOW HIGH]";

struct Usage : std::runtime_error {
  using std::runtime_error::runtime_error;
};

template <class Number>
Number parse(const std::string& text, const char* what) {
  Number value{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end)
    throw Usage(std::string(what) + ": \"" + text + "\" is not a number");
  return value;
}

std::string format(double value) {
  char buffer[32];
  const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value);
  return error == std::errc() ? std::string(buffer, end) : "nan";
}

truss::Areas parseRow(const std::string& line) {
  truss::Areas areas{};
  std::istringstream cells(line);
  std::string cell;
  int count = 0;
  for (; std::getline(cells, cell, ','); ++count)
    if (count < truss::NumMembers) areas[count] = parse<double>(cell, "area");
  if (count != truss::NumMembers) throw Usage("a row of points needs 10 areas");
  return areas;
}

std::string results(const truss::Areas& areas) {
  const truss::Response r = truss::analyse(areas);
  return format(r.weight) + ',' + format(r.maxStress()) + ',' + format(r.tipDisplacement());
}

void simulate(const std::string& points, const std::string& out) {
  std::ifstream in(points);
  if (!in) throw Usage("cannot read " + points);
  std::string line;
  if (!std::getline(in, line) || line != Inputs)
    throw Usage(points + ": the header must be " + Inputs);
  std::string text = std::string(Outputs) + '\n';
  while (std::getline(in, line))
    text += results(parseRow(line)) + '\n';
  std::ofstream file(out, std::ios::binary);
  file << text;
  if (!file.flush()) throw Usage("cannot write " + out);
}

void sample(int count, unsigned seed, double low, double high) {
  C_RandNum random;
  if (random.Init(E_SeedUser, seed) != 0) throw Usage("the seed must not be 0");
  random.SetRangeValue(low, high);
  std::cout << Inputs << ',' << Outputs << '\n';
  for (int i = 0; i < count; ++i) {
    truss::Areas areas{};
    random.GetRandNum(truss::NumMembers, areas.data());
    for (double area : areas)
      std::cout << format(area) << ',';
    std::cout << results(areas) << '\n';
  }
  if (!std::cout.flush()) throw Usage("cannot write to standard output");
}

struct SampleOptions {
  int count = 0;
  unsigned seed = 1;
  double low = 10.0;
  double high = 35.0;
};

SampleOptions parseSampleOptions(const std::vector<std::string>& args) {
  SampleOptions options;
  auto next = [&](std::size_t& i) -> const std::string& {
    if (++i >= args.size()) throw Usage("a value is missing after the last option");
    return args[i];
  };
  for (std::size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--sample")
      options.count = parse<int>(next(i), "--sample");
    else if (args[i] == "--seed")
      options.seed = parse<unsigned>(next(i), "--seed");
    else if (args[i] == "--bounds") {
      options.low = parse<double>(next(i), "--bounds");
      options.high = parse<double>(next(i), "--bounds");
    } else
      throw Usage("unknown option " + args[i] + "; --help tells what there is");
  }
  if (options.count < 1 || !(0.0 < options.low && options.low < options.high))
    throw Usage("--sample needs a count of at least 1, and bounds 0 < LOW < HIGH");
  return options;
}

} // namespace

int main(int argc, char** argv) try {
  const std::vector<std::string> args(argv + 1, argv + argc);
  if (args.size() == 1 && (args[0] == "--help" || args[0] == "-h")) {
    std::cout << UsageText << '\n';
  } else if (!args.empty() && args[0].rfind("--", 0) == 0) {
    const SampleOptions options = parseSampleOptions(args);
    sample(options.count, options.seed, options.low, options.high);
  } else if (args.size() == 2) {
    simulate(args[0], args[1]);
  } else {
    throw Usage(UsageText);
  }
  return 0;
} catch (const Usage& usage) {
  std::cerr << "ten_bar_truss: " << usage.what() << '\n';
  return 2;
} catch (const std::exception& error) {
  std::cerr << "ten_bar_truss: " << error.what() << '\n';
  return 1;
}
