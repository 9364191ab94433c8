#include "support/Processes.h"

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <tuple>
#include <typeindex>
#include <typeinfo>
#include <vector>

#include <gtest/gtest.h>
#include <zarel/C_Communicator.h>

namespace support {

namespace {

constexpr int worldHandle = 91;

constexpr char waitsForEver[] = "every rank that has not ended waits for ever";

// Ends a rank because another one has failed.
struct OtherRankFailed {};

// What a rank brings to a collective call.
struct Contribution {
  const char* call = "";
  std::type_index type = typeid(void);
  int count = 0;
  int root = 0;
  void* values = nullptr;

  bool fits(const Contribution& other) const {
    return std::strcmp(call, other.call) == 0 && type == other.type && count == other.count &&
           root == other.root;
  }
};

struct Message {
  std::type_index type;
  std::vector<char> bytes;
};

using Condition = std::function<bool()>;

// What the ranks share. Whoever holds `baton` runs.
struct Shared {
  explicit Shared(int count)
      : size(count),
        living(count),
        waiting(static_cast<size_t>(count)),
        contributions(static_cast<size_t>(count)) {}

  // Whether all ranks that have not ended wait, each for what only another one could do.
  bool isStuck() const {
    const auto waits = [](const Condition& ready) { return ready && !ready(); };
    return living > 0 && std::count_if(waiting.begin(), waiting.end(), waits) == living;
  }

  const int size;
  int living;
  std::vector<Condition> waiting; // what each rank waits for, empty for one that runs
  std::mutex baton;
  std::condition_variable changed;
  bool failed = false;
  std::map<std::tuple<int, int, int>, std::deque<Message>> mail;
  std::vector<Contribution> contributions;
  int arrived = 0;
  long rounds = 0;
};

// The rank of the calling thread, and its hold on the baton.
thread_local int thisRank = 0;
thread_local std::unique_lock<std::mutex>* thisHold = nullptr;

template <class T>
bool isLess(const T& a, const T& b) {
  return a < b;
}
bool isLess(const std::complex<double>& a, const std::complex<double>& b) {
  return std::make_pair(a.real(), a.imag()) < std::make_pair(b.real(), b.imag());
}

class Ranks : public C_Communicator {
public:
  explicit Ranks(Shared& shared) : C_Communicator(0, shared.size), _shared(shared) {}

  int World() override { return worldHandle; }
  std::string CreateDName(std::string prefix, std::string suffix) override {
    return (_size == 1 ? prefix : prefix + std::to_string(thisRank)) + suffix;
  }
  void abort(int, int code) override {
    throw std::runtime_error("abort with code " + std::to_string(code));
  }
  void check(int result) override {
    if (result != 0) throw std::runtime_error("failed call: " + std::to_string(result));
  }
  void barrier(int) override {
    meet<char>("barrier", nullptr, 0, 0);
    rendezvous();
  }

  void exchange(int handle, int neighbours, int* ranks, int* sendCounts, int* sendValues,
                int* recvCounts, int* recvValues) override {
    for (int k = 0; k < neighbours; sendValues += sendCounts[k++])
      send(handle, ranks[k], sendValues, sendCounts[k]);
    for (int k = 0; k < neighbours; recvValues += recvCounts[k++])
      recv(handle, ranks[k], recvValues, recvCounts[k]);
  }
  void exchange(int handle, int neighbours, int* ranks, int* sendCounts, int** sendValues,
                int* recvCounts, int** recvValues) override {
    exchangeEach(handle, neighbours, ranks, sendCounts, sendValues, recvCounts, recvValues);
  }
  void exchange(int handle, int neighbours, int* ranks, int* sendCounts, double** sendValues,
                int* recvCounts, double** recvValues) override {
    exchangeEach(handle, neighbours, ranks, sendCounts, sendValues, recvCounts, recvValues);
  }

#define ZAREL_REDUCE(name, T, combine)                                                             \
  void name(int count, T* values) override {                                                       \
    reduce(#name, count, values, [](const T& a, const T& b) -> T { return combine; });             \
  }
#define ZAREL_EXTREMES(T)                                                                          \
  ZAREL_REDUCE(glbMax, T, isLess(a, b) ? b : a)                                                    \
  ZAREL_REDUCE(glbMin, T, isLess(b, a) ? b : a)
#define ZAREL_SUM(T) ZAREL_REDUCE(glbSum, T, static_cast<T>(a + b))
#define ZAREL_BCAST(T)                                                                             \
  void Bcast(T* values, int count, int root) override {                                            \
    broadcast(values, count, root);                                                                \
  }
#define ZAREL_MESSAGE(T)                                                                           \
  void send(int handle, int to, T* values, int count) override {                                   \
    post(handle, to, values, count);                                                               \
  }                                                                                                \
  void recv(int handle, int from, T* values, int count) override {                                 \
    fetch(handle, from, values, count);                                                            \
  }
#define ZAREL_FOR_EACH_NUMBER(X)                                                                   \
  X(std::complex<double>) X(std::complex<float>) X(double) X(float) X(__int64) X(int) X(short int)

  ZAREL_EXTREMES(std::complex<double>)
  ZAREL_EXTREMES(double)
  ZAREL_EXTREMES(__int64)
  ZAREL_EXTREMES(int)
  ZAREL_REDUCE(glbOr, int, a | b)
  ZAREL_REDUCE(glbOr, bool, a || b)
  ZAREL_FOR_EACH_NUMBER(ZAREL_SUM)
  ZAREL_FOR_EACH_NUMBER(ZAREL_BCAST)
  ZAREL_BCAST(char)
  ZAREL_BCAST(bool)
  ZAREL_FOR_EACH_NUMBER(ZAREL_MESSAGE)
  ZAREL_MESSAGE(char)

private:
  // Lets others run until `ready`.
  void wait(const Condition& ready) {
    Condition& own = _shared.waiting[static_cast<size_t>(thisRank)];
    own = ready;
    const bool stuck = _shared.isStuck();
    if (!stuck) _shared.changed.wait(*thisHold, [&] { return _shared.failed || ready(); });
    own = nullptr;
    if (stuck) throw std::runtime_error(waitsForEver);
    if (_shared.failed) throw OtherRankFailed();
  }

  // Returns when all ranks have come here.
  void rendezvous() {
    const long round = _shared.rounds;
    if (++_shared.arrived == _shared.size) {
      _shared.arrived = 0;
      ++_shared.rounds;
      _shared.changed.notify_all();
    } else {
      wait([&] { return _shared.rounds != round; });
    }
  }

  // Shows what each rank brings, until the ranks meet again.
  template <class T>
  void meet(const char* call, T* values, int count, int root) {
    const Contribution own = {call, typeid(T), count, root, values};
    _shared.contributions[static_cast<size_t>(thisRank)] = own;
    rendezvous();
    for (const Contribution& other : _shared.contributions)
      if (!other.fits(own))
        throw std::runtime_error(std::string(call) + " met " + other.call + " or another count");
  }

  template <class T>
  const T* valuesOf(int rank) const {
    return static_cast<const T*>(_shared.contributions[static_cast<size_t>(rank)].values);
  }

  template <class T, class Combine>
  void reduce(const char* call, int count, T* values, Combine combine) {
    meet(call, values, count, 0);
    const auto result = std::make_unique<T[]>(static_cast<size_t>(count));
    std::copy_n(valuesOf<T>(0), count, result.get());
    for (int rank = 1; rank < _shared.size; ++rank)
      std::transform(result.get(), result.get() + count, valuesOf<T>(rank), result.get(), combine);
    rendezvous();
    std::copy_n(result.get(), count, values);
  }

  template <class T>
  void broadcast(T* values, int count, int root) {
    meet("Bcast", values, count, root);
    if (thisRank != root) std::copy_n(valuesOf<T>(root), count, values);
    rendezvous();
  }

  template <class T>
  void post(int handle, int to, T* values, int count) {
    if (to < 0 || to >= _shared.size || count < 0) throw std::runtime_error("bad message");
    Message message = {typeid(T), std::vector<char>(static_cast<size_t>(count) * sizeof(T))};
    if (count > 0) std::memcpy(message.bytes.data(), values, message.bytes.size());
    _shared.mail[{handle, thisRank, to}].push_back(std::move(message));
    _shared.changed.notify_all();
  }

  template <class T>
  void fetch(int handle, int from, T* values, int count) {
    auto& queue = _shared.mail[{handle, from, thisRank}];
    wait([&] { return !queue.empty(); });
    const Message message = std::move(queue.front());
    queue.pop_front();
    if (message.type != typeid(T) || message.bytes.size() != static_cast<size_t>(count) * sizeof(T))
      throw std::runtime_error("another message than the receiver asks for");
    if (count > 0)
      std::memcpy(static_cast<void*>(values), message.bytes.data(), message.bytes.size());
  }

  template <class T>
  void exchangeEach(int handle, int neighbours, int* ranks, int* sendCounts, T** sendValues,
                    int* recvCounts, T** recvValues) {
    for (int k = 0; k < neighbours; ++k)
      send(handle, ranks[k], sendValues[k], sendCounts[k]);
    for (int k = 0; k < neighbours; ++k)
      recv(handle, ranks[k], recvValues[k], recvCounts[k]);
  }

  Shared& _shared;
};

// The communicator is installed for as long as the ranks live.
class Installed {
public:
  explicit Installed(Shared& shared) { C_Communicator::setInstance(new Ranks(shared)); }
  ~Installed() { C_Communicator::kill(); }
  Installed(const Installed&) = delete;
  Installed& operator=(const Installed&) = delete;
};

void runRank(Shared& shared, int rank, const std::function<void(int)>& body,
             std::exception_ptr& failure) {
  std::unique_lock<std::mutex> hold(shared.baton);
  thisRank = rank;
  thisHold = &hold;
  try {
    body(rank);
    --shared.living;
    if (!shared.isStuck()) return;
    throw std::runtime_error(waitsForEver);
  } catch (const OtherRankFailed&) {
    return;
  } catch (...) {
    if (!shared.failed) failure = std::current_exception();
  }
  shared.failed = true;
  shared.changed.notify_all();
}

} // namespace

void runProcesses(int count, const std::function<void(int)>& body) {
  Shared shared(count);
  std::exception_ptr failure;
  {
    const Installed communicator(shared);
    std::vector<std::thread> threads;
    for (int rank = 0; rank < count; ++rank)
      threads.emplace_back([&, rank] { runRank(shared, rank, body, failure); });
    for (std::thread& thread : threads)
      thread.join();
  }
  if (failure) std::rethrow_exception(failure);
  for (const auto& [way, queue] : shared.mail)
    EXPECT_TRUE(queue.empty()) << "rank " << std::get<1>(way) << " sent to rank "
                               << std::get<2>(way) << " what nobody received";
}

} // namespace support
