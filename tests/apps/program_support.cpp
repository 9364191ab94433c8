#include "program_support.h"

#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <sstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace apptest {

namespace {

void redirect(const std::string& file, int target, int flags) {
  const int fd = open(file.c_str(), flags, 0600);
  if (fd < 0) _exit(99);
  dup2(fd, target);
  close(fd);
}

[[noreturn]] void become(const Words& words, const Around& setup, const std::string& in,
                         const std::string& out, const std::string& err) {
  redirect(in, STDIN_FILENO, O_RDONLY);
  redirect(out, STDOUT_FILENO, O_WRONLY | O_CREAT);
  redirect(err, STDERR_FILENO, O_WRONLY | O_CREAT | O_TRUNC);
  for (const auto& entry : setup.environment)
    putenv(strdup(entry.c_str()));
  if (setup.child) setup.child();
  std::vector<char*> arguments{strdup(ZAREL_PROGRAM)};
  for (const auto& word : words)
    arguments.push_back(strdup(word.c_str()));
  arguments.push_back(nullptr);
  execv(ZAREL_PROGRAM, arguments.data());
  _exit(98);
}

} // namespace

Outcome Program::zarel(const Words& words, const Around& setup) const {
  // Streams of the run lie in a folder of their own, so that tests can count files.
  char streams[] = "/tmp/zarel-run-XXXXXX";
  if (!mkdtemp(streams)) throw std::runtime_error("no temporary folder");
  const std::filesystem::path folder(streams);
  const std::string in = setup.inputFile.empty() ? (folder / "in").string() : setup.inputFile;
  if (setup.inputFile.empty()) std::ofstream(in, std::ios::binary) << setup.input;
  const std::string out = setup.outputFile.empty() ? (folder / "out").string() : setup.outputFile;
  const std::string err = (folder / "err").string();

  const pid_t child = fork();
  if (child == 0) become(words, setup, in, out, err);
  if (setup.meanwhile) setup.meanwhile(child);
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);

  const auto contents = [](const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  Outcome run;
  run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  run.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  if (setup.outputFile.empty()) run.out = contents(out);
  run.err = contents(err);
  run.peakKiB = usage.ru_maxrss;
  std::filesystem::remove_all(folder);
  return run;
}

std::string Program::writeSamples(int count, const std::string& name) const {
  std::ostringstream text;
  text.precision(17);
  text << "a,b,y,z\n";
  for (int i = 0; i < count; ++i) {
    double whole = 0;
    const double a = std::modf(0.5 + i * 0.7548776662466927, &whole);
    const double b = std::modf(0.5 + i * 0.5698402909980532, &whole);
    text << a << "," << b << "," << exactY(a, b) << "," << exactZ(a, b) << "\n";
  }
  return write(name, text.str());
}

double exactY(double a, double b) {
  return std::sin(3 * a) + std::cos(4 * b);
}

double exactZ(double a, double b) {
  return 3 + b * std::exp(a);
}

std::string Program::fitModel(const std::string& name, const Words& more) const {
  Words words{"fit", writeSamples(), "--inputs", "2", "-o", path(name)};
  words.insert(words.end(), more.begin(), more.end());
  const Outcome run = zarel(words);
  EXPECT_EQ(run.code, 0) << run.err;
  return path(name);
}

std::string Program::writePoints(int count, const std::string& name) const {
  std::ostringstream text;
  text.precision(17);
  text << "a,b\n";
  for (int i = 0; i < count; ++i) {
    const double t = (i + 0.5) / count;
    text << t << "," << 1 - t * t << "\n";
  }
  return write(name, text.str());
}

std::vector<std::vector<double>> numbersOf(const std::string& csv) {
  std::vector<std::vector<double>> rows;
  std::istringstream lines(csv);
  std::string line;
  std::getline(lines, line);
  while (std::getline(lines, line)) {
    rows.emplace_back();
    std::istringstream fields(line);
    std::string field;
    while (std::getline(fields, field, ','))
      rows.back().push_back(std::strtod(field.c_str(), nullptr));
  }
  return rows;
}

std::string firstLine(const std::string& text) {
  return text.substr(0, text.find('\n'));
}

} // namespace apptest
