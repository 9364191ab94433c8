#include "runner.h"

#include "command.h"
#include "csv.h"
#include "failure.h"
#include "interrupt.h"
#include "number.h"
#include "results_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include <poll.h>

namespace fs = std::filesystem;

namespace app::refine {

struct Runner::Run {
  Run(long long runNumber, std::vector<Task> runTasks, std::string runFolder,
      const ProcessStart& start)
      : number(runNumber),
        tasks(std::move(runTasks)),
        folder(std::move(runFolder)),
        process(start),
        started(Clock::now()) {}

  long long number;
  std::vector<Task> tasks;
  std::string folder;
  Process process;
  Clock::time_point started;
  Clock::time_point killTime = Clock::time_point::max(); ///< set once it was asked to end
  bool timedOut = false;
};

namespace {

using Seconds = std::chrono::duration<double>;

std::string runName(long long number) {
  char name[32];
  std::snprintf(name, sizeof name, "run-%06lld", number);
  return name;
}

/// The largest number among folders "run-NNNNNN" of this folder.
long long largestRun(const fs::path& folder) {
  long long largest = 0;
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(folder, ignored)) {
    long long number = 0;
    if (std::sscanf(entry.path().filename().c_str(), "run-%lld", &number) == 1)
      largest = std::max(largest, number);
  }
  return largest;
}

void makeFolder(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) failIo("cannot make the folder " + folder.string(), error.value());
}

void writePoints(const std::string& path, const std::vector<std::string>& inputs,
                 const std::vector<Task>& tasks) {
  OutputFile file(path, true);
  CsvWriter csv(file);
  csv.header(inputs);
  for (const Task& task : tasks) {
    for (double x : task.x)
      csv.field(x);
    csv.endRow();
  }
  csv.flush();
  file.commit();
}

/// The last words on a simulation's standard error, for the reason of its failure.
std::string lastLine(const std::string& path) {
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  if (!in) return {};
  const std::streamoff size = in.tellg(), tail = std::min<std::streamoff>(size, 4096);
  in.seekg(size - tail);
  std::string line, last;
  while (std::getline(in, line))
    if (line.find_first_not_of(" \t\r") != std::string::npos) last = line;
  for (char& c : last)
    if (static_cast<unsigned char>(c) < ' ') c = ' ';
  return last.substr(0, 300);
}

ProcessStart plan(const SimulationSettings& settings, const std::string& folder) {
  const std::string points = folder + "/points.csv", results = folder + "/results.csv";
  ProcessStart start;
  start.program = settings.program;
  start.arguments = fillPlaceholders(
      settings.words, {{"points", points}, {"results", results}, {"cwd", settings.startDirectory}});
  start.directory = folder;
  start.outputFile = folder + "/stdout.txt";
  start.errorFile = folder + "/stderr.txt";
  start.environment = {
      {"ZAREL_STUDY", settings.study}, {"ZAREL_POINTS", points}, {"ZAREL_RESULTS", results}};
  return start;
}

} // namespace

Runner::Runner(const SimulationSettings& settings) : settings_(settings) {
  const fs::path study(settings.study);
  nextRun_ = std::max(largestRun(study / "work"), largestRun(study / "failed")) + 1;
  std::error_code ignored;
  fs::remove_all(study / "work", ignored);
  makeFolder(study / "work");
}

Runner::~Runner() = default;

Runner::Outcome Runner::run(std::deque<Task> tasks, RunListener& listener) {
  tasks_ = std::move(tasks);
  accepting_ = true;
  try {
    while (true) {
      if (!interrupted_ && interrupt::requested()) stopAll();
      startMore();
      if (runs_.empty()) break;
      wait();
      const auto now = Clock::now();
      for (Run& run : runs_)
        watchClock(run, now);
      collect(listener);
      listener.waiting();
    }
  } catch (...) {
    runs_.clear(); // kills what still runs
    throw;
  }
  if (interrupted_) return Outcome::interrupted;
  return accepting_ ? Outcome::finished : Outcome::stopped;
}

std::vector<Task> Runner::takeBatch() {
  std::vector<Task> batch;
  const auto size = static_cast<std::size_t>(settings_.batch);
  while (!tasks_.empty() && batch.size() < size) {
    if (tasks_.front().alone && !batch.empty()) break;
    batch.push_back(std::move(tasks_.front()));
    tasks_.pop_front();
    if (batch.back().alone) break;
  }
  return batch;
}

void Runner::startMore() {
  while (accepting_ && !interrupted_ && !tasks_.empty() &&
         runs_.size() < static_cast<std::size_t>(settings_.jobs))
    start(takeBatch());
}

void Runner::start(std::vector<Task> tasks) {
  const long long number = nextRun_++;
  const std::string folder = settings_.study + "/work/" + runName(number);
  makeFolder(folder);
  writePoints(folder + "/points.csv", settings_.inputs, tasks);
  runs_.emplace_back(number, std::move(tasks), folder, plan(settings_, folder));
}

/// Sleeps until a run ends, but no longer than a tenth of a second.
void Runner::wait() const {
  std::vector<pollfd> watched;
  int milliseconds = 100;
  for (const Run& run : runs_) {
    if (run.process.descriptor() >= 0)
      watched.push_back({run.process.descriptor(), POLLIN, 0});
    else
      milliseconds = 5; // no such descriptors on this system: look often
  }
  ::poll(watched.data(), watched.size(), milliseconds); // a signal ends it early, as it should
}

/// Asks a run that takes too long to end, and ends it when it does not listen.
void Runner::watchClock(Run& run, Clock::time_point now) const {
  if (now >= run.killTime) {
    run.process.kill();
    return;
  }
  const bool late = settings_.timeout > 0 && now - run.started >= Seconds(settings_.timeout);
  if (!late || run.killTime != Clock::time_point::max()) return;
  run.timedOut = true;
  run.killTime = now + std::chrono::duration_cast<Clock::duration>(Seconds(settings_.grace));
  run.process.terminate();
}

/// A signal came: nothing new is started, and what runs is asked to end. A run that still ends
/// well within the grace counts.
void Runner::stopAll() {
  interrupted_ = true;
  const auto end =
      Clock::now() + std::chrono::duration_cast<Clock::duration>(Seconds(settings_.grace));
  for (Run& run : runs_) {
    run.killTime = std::min(run.killTime, end);
    run.process.terminate();
  }
}

void Runner::collect(RunListener& listener) {
  for (auto run = runs_.begin(); run != runs_.end();) {
    if (!run->process.ended()) {
      ++run;
      continue;
    }
    finish(*run, listener);
    run = runs_.erase(run);
  }
}

void Runner::finish(Run& run, RunListener& listener) {
  RunResult result = judge(run);
  if (interrupted_ && result.done.empty() && !run.timedOut) return; // stopped by us, not failed
  putAway(run, result);
  accepting_ = listener.runEnded(result) && accepting_;
  for (auto task = run.tasks.rbegin(); task != run.tasks.rend(); ++task) {
    if (std::find(result.split.begin(), result.split.end(), task->id) == result.split.end())
      continue;
    task->alone = true;
    tasks_.push_front(std::move(*task));
  }
}

/// Decides what each point of an ended run has come to.
RunResult Runner::judge(Run& run) {
  RunResult result;
  result.seconds = Seconds(Clock::now() - run.started).count();
  Results results;
  if (run.timedOut)
    results.error = "it still ran after " + numberText(settings_.timeout) + " s (--timeout)";
  else if (!run.process.succeeded())
    results.error = run.process.ending();
  else
    results = readResults(run.folder + "/results.csv", settings_.outputs,
                          static_cast<int>(run.tasks.size()));
  if (!results.error.empty() && run.tasks.size() > 1) {
    for (const Task& task : run.tasks)
      result.split.push_back(task.id);
    return result;
  }
  if (!results.error.empty()) {
    const std::string words = lastLine(run.folder + "/stderr.txt");
    results.rows.assign(1, {{}, results.error + (words.empty() ? "" : ": " + words)});
  }
  for (std::size_t i = 0; i < run.tasks.size(); ++i) {
    ResultRow& row = results.rows[i];
    if (row.error.empty())
      result.done.emplace_back(run.tasks[i].id, std::move(row.values));
    else
      result.failed.emplace_back(run.tasks[i].id, row.error);
  }
  return result;
}

/// The folder of a failed run is evidence and moves aside; others go.
void Runner::putAway(const Run& run, RunResult& result) {
  std::error_code error;
  if (!result.failed.empty()) {
    const std::string name = "failed/" + runName(run.number);
    makeFolder(settings_.study + "/failed");
    fs::rename(run.folder, settings_.study + '/' + name, error);
    if (error) failIo("cannot move " + run.folder + " to " + name, error.value());
    result.folder = name;
  } else if (!settings_.keepRuns) {
    fs::remove_all(run.folder, error);
  }
}

} // namespace app::refine
