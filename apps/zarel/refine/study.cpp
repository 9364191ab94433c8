#include "study.h"

#include "failure.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <filesystem>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace app::refine {
namespace {

constexpr int schema = 1;
const char* const journalName = "journal.log";
const char* const lockName = "lock";
/// The setting that tells how points were drawn; studies from before it have none.
const char* const samplingName = "sampling";
/// All that a study keeps in its folder.
const char* const ourNames[] = {journalName,  lockName,      "work",
                                "failed",     "study.krg",   "report.html",
                                "report.svg", "samples.csv", "failed.csv"};

[[noreturn]] void failDamaged(const std::string& what) {
  throw Failure(ExitCode::badInput, "the study's journal does not fit together: " + what,
                "start over in another folder");
}

Json numberOrNull(double value) {
  return std::isfinite(value) ? Json(value) : Json(nullptr);
}

double numberFrom(const Json& value) {
  return value.is_null() ? std::nan("") : value.get<double>();
}

Json validationJson(const Validation& validation) {
  Json json = {{"largest_error", numberOrNull(validation.largestError)},
               {"rms_error", numberOrNull(validation.rmsError)},
               {"r2", Json::array()}};
  for (double r2 : validation.r2)
    json["r2"].push_back(numberOrNull(r2));
  return json;
}

std::unique_ptr<Validation> validationFrom(const Json& json) {
  if (json.is_null()) return nullptr;
  auto validation = std::make_unique<Validation>();
  validation->largestError = numberFrom(json.at("largest_error"));
  validation->rmsError = numberFrom(json.at("rms_error"));
  for (const Json& r2 : json.at("r2"))
    validation->r2.push_back(numberFrom(r2));
  return validation;
}

bool isOurs(const std::string& name) {
  return std::any_of(std::begin(ourNames), std::end(ourNames),
                     [&](const char* ours) { return name == ours; });
}

bool hasJournal(const std::string& folder) {
  std::error_code ignored;
  return fs::exists(folder + '/' + journalName, ignored);
}

} // namespace

double Validation::smallestR2() const {
  return r2.empty() ? std::nan("") : *std::min_element(r2.begin(), r2.end());
}

Study::Study(const std::string& folder, bool force, const Json& settings,
             const std::function<StudyStart()>& begin) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) failIo("cannot make the study folder " + folder, error.value());
  folder_ = fs::canonical(folder).string();
  lock();
  try {
    requireOurFolder();
    if (force) removeFormer();
    journal_ = std::make_unique<Journal>(path(journalName), [this](const Json& r) { take(r); });
    torn_ = journal_->wasTorn();
    if (settings_.is_null()) {
      start(begin());
    } else {
      checkSettings(settings);
      resumed_ = true;
    }
    syncFolder(folder_);
  } catch (...) {
    ::close(lock_);
    throw;
  }
}

Study::~Study() {
  ::close(lock_);
}

void Study::lock() {
  lock_ = ::open(path(lockName).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (lock_ < 0) failIo("cannot open " + path(lockName), errno);
  if (::flock(lock_, LOCK_EX | LOCK_NB) == 0) return;
  const int reason = errno;
  ::close(lock_);
  if (reason != EWOULDBLOCK) failIo("cannot lock " + path(lockName), reason);
  throw Failure(ExitCode::usage, "another process is at work in the study folder " + folder_,
                "wait for it to end, or choose another folder by --study");
}

/// A folder without a journal may hold nothing of somebody else's.
void Study::requireOurFolder() const {
  if (hasJournal(folder_)) return;
  for (const auto& entry : fs::directory_iterator(folder_)) {
    const std::string name = entry.path().filename().string();
    if (!isOurs(name))
      throw Failure(ExitCode::usage,
                    "the folder " + folder_ + " is no study and not empty: it holds " + name,
                    "choose an empty or a new folder by --study");
  }
}

void Study::removeFormer() const {
  // The journal first: without it the rest means nothing, whatever interrupts this.
  for (const char* name : ourNames) {
    if (std::string(name) == lockName) continue;
    std::error_code error;
    fs::remove_all(path(name), error);
    if (error) failIo("cannot remove " + path(name), error.value());
  }
}

void Study::start(const StudyStart& start) {
  Json record = {{"record", "study"},
                 {"schema", schema},
                 {"settings", start.settings},
                 {"points", start.points}};
  if (!start.results.empty()) record["results"] = start.results;
  append(record);
}

void Study::checkSettings(const Json& settings) const {
  for (const auto& [name, value] : settings.items()) {
    const Json former = settings_.contains(name) ? settings_.at(name) : Json(nullptr);
    if (former == value) continue;
    if (name == samplingName)
      throw Failure(ExitCode::usage,
                    "the study in " + folder_ +
                        " was begun by a version of the program that drew its points differently",
                    "finish it with that version, choose another folder by --study, or start over "
                    "with --force");
    throw Failure(ExitCode::usage,
                  "the study in " + folder_ + " was begun with " + name + " = " + former.dump() +
                      ", not " + value.dump(),
                  "choose another folder by --study, or start over with --force");
  }
}

int Study::simulatedCount() const {
  return static_cast<int>(std::count_if(points_.begin(), points_.end(), [](const StudyPoint& p) {
    return !p.given && p.state != StudyPoint::State::waiting;
  }));
}

int Study::failedCount() const {
  return static_cast<int>(std::count_if(points_.begin(), points_.end(), [](const StudyPoint& p) {
    return p.state == StudyPoint::State::failed;
  }));
}

std::deque<Task> Study::waiting(const Plan& plan) const {
  std::deque<Task> tasks;
  for (std::size_t id = plan.first; id < plan.first + plan.count; ++id)
    if (points_[id].state == StudyPoint::State::waiting)
      tasks.push_back({static_cast<long long>(id), points_[id].x, points_[id].alone});
  return tasks;
}

std::vector<std::size_t> Study::finished(const Plan& plan) const {
  std::vector<std::size_t> ids;
  for (std::size_t id = plan.first; id < plan.first + plan.count; ++id)
    if (points_[id].state == StudyPoint::State::done) ids.push_back(id);
  return ids;
}

void Study::append(const Json& record) {
  journal_->append(record);
  take(record);
}

void Study::recordRun(const RunResult& result) {
  Json record = {{"record", "run"}, {"seconds", numberOrNull(result.seconds)}};
  for (const auto& [id, y] : result.done)
    record["done"].push_back(
        {{"id", id}, {"x", points_.at(static_cast<std::size_t>(id)).x}, {"y", y}});
  for (const auto& [id, reason] : result.failed)
    record["failed"].push_back(
        {{"id", id}, {"x", points_.at(static_cast<std::size_t>(id)).x}, {"reason", reason}});
  if (!result.folder.empty()) record["folder"] = result.folder;
  if (!result.split.empty()) record["split"] = result.split;
  append(record);
}

void Study::recordRound(RoundRecord round) {
  append({{"record", "round"},
          {"round", rounds_.size()},
          {"samples", round.samples},
          {"simulated", round.simulated},
          {"failed", round.failed},
          {"predicted_error", numberOrNull(round.predictedError)},
          {"predicted_rms", numberOrNull(round.predictedRms)},
          {"validation", round.validation ? validationJson(*round.validation) : Json(nullptr)},
          {"theta", round.theta},
          {"fit_seconds", round.fitSeconds},
          {"seconds", round.seconds}});
}

void Study::recordPlan(const std::vector<Row>& points) {
  append({{"record", "plan"}, {"after_round", rounds_.size() - 1}, {"points", points}});
}

void Study::take(const Json& record) {
  try {
    const std::string kind = record.at("record").get<std::string>();
    if (settings_.is_null() != (kind == "study")) failDamaged("it does not begin with its study");
    if (kind == "study") return takeStart(record);
    if (kind == "run") return takeRun(record);
    if (kind == "round") return takeRound(record);
    if (kind == "plan") return takePlan(record);
    failDamaged("a record of the unknown kind \"" + kind + '"');
  } catch (const Json::exception& error) {
    failDamaged(error.what());
  }
}

void Study::takeStart(const Json& record) {
  if (record.at("schema").get<int>() != schema)
    throw Failure(ExitCode::badInput, "the study was written by another version of the program");
  settings_ = record.at("settings");
  addPlan(record.at("points").get<std::vector<Row>>());
  if (!record.contains("results")) return;
  const auto results = record.at("results").get<std::vector<Row>>();
  if (results.size() != points_.size()) failDamaged("points and results differ in number");
  for (std::size_t i = 0; i < results.size(); ++i) {
    points_[i].y = results[i];
    points_[i].state = StudyPoint::State::done;
    points_[i].given = true;
  }
}

StudyPoint& Study::waitingPoint(const Json& id) {
  const auto number = id.get<std::size_t>();
  if (number >= points_.size()) failDamaged("point " + std::to_string(number) + " is not there");
  if (points_[number].state != StudyPoint::State::waiting)
    failDamaged("point " + std::to_string(number) + " has two results");
  return points_[number];
}

void Study::takeRun(const Json& record) {
  for (const Json& done : record.value("done", Json::array())) {
    StudyPoint& point = waitingPoint(done.at("id"));
    point.y = done.at("y").get<Row>();
    point.state = StudyPoint::State::done;
  }
  for (const Json& failed : record.value("failed", Json::array())) {
    StudyPoint& point = waitingPoint(failed.at("id"));
    point.reason = failed.at("reason").get<std::string>();
    point.folder = record.value("folder", std::string());
    point.state = StudyPoint::State::failed;
  }
  for (const Json& id : record.value("split", Json::array()))
    waitingPoint(id).alone = true;
}

void Study::takeRound(const Json& record) {
  if (record.at("round").get<std::size_t>() != rounds_.size() ||
      rounds_.size() + 1 != plans_.size())
    failDamaged("its rounds are not in order");
  RoundRecord round;
  round.samples = record.at("samples").get<int>();
  round.simulated = record.at("simulated").get<int>();
  round.failed = record.at("failed").get<int>();
  round.predictedError = numberFrom(record.at("predicted_error"));
  round.predictedRms = numberFrom(record.at("predicted_rms"));
  round.validation = validationFrom(record.at("validation"));
  round.theta = record.at("theta").get<std::vector<double>>();
  round.fitSeconds = record.at("fit_seconds").get<double>();
  round.seconds = record.at("seconds").get<double>();
  rounds_.push_back(std::move(round));
}

void Study::takePlan(const Json& record) {
  if (rounds_.size() != plans_.size()) failDamaged("its plans are not in order");
  addPlan(record.at("points").get<std::vector<Row>>());
}

void Study::addPlan(const std::vector<Row>& points) {
  plans_.push_back({points_.size(), points.size()});
  for (const Row& x : points) {
    StudyPoint point;
    point.x = x;
    points_.push_back(std::move(point));
  }
}

} // namespace app::refine
