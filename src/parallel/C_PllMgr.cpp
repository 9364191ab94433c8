#include <zarel/C_PllMgr.h>

template class C_Singleton<C_PllMgr>;

namespace {

// The states that the manager asks the host about, by their place in the table of codes.
enum State : int { askedFirst = 0, askedSecond = 1, valueBefore = 9, valueAfter = 10 };

// What the count of workers is asked with: the number itself, whatever the table says.
constexpr int countOfWorkers = 3;

void noLock(int*) {}
int onlyWorker() {
  return 0;
}
int one(int*) {
  return 1;
}
void setNothing(int*, int*) {}
void stay() {}
void allInOne(int* count, int* parts, int* part) {
  *parts = 1;
  *part = *count;
}

template <class... Args>
void callDirectly(void (*function)(Args...), Args... args) {
  function(args...);
}

} // namespace

C_PllMgr::C_PllMgr()
    : _codes{{0, 0},  {1, 1},  {2, 2},  {3, 3}, {4, 4},  {5, 5},
             {6, 10}, {7, 12}, {8, 22}, {9, 0}, {10, 1}, {11, 3}},
      _lock(noLock),
      _unlock(noLock),
      _currentWorker(onlyWorker),
      _query(one),
      _setValue(setNothing),
      _enter(stay),
      _leave(stay),
      _share(allInOne),
      _gate1(callDirectly),
      _gate2(callDirectly),
      _gate3(callDirectly),
      _gate4(callDirectly),
      _gate5(callDirectly),
      _gate6(callDirectly),
      _gate7(callDirectly) {}

C_PllMgr::~C_PllMgr() = default;

void C_PllMgr::Init(LockFunction lock, LockFunction unlock, WorkerFunction currentWorker,
                    QueryFunction query, SetFunction setValue, StateFunction enter,
                    StateFunction leave, ShareFunction share, Gate1 gate1, Gate2 gate2, Gate3 gate3,
                    Gate4 gate4, Gate5 gate5, Gate6 gate6, Gate7 gate7) {
  _lock = lock;
  _unlock = unlock;
  _currentWorker = currentWorker;
  _query = query;
  _setValue = setValue;
  _enter = enter;
  _leave = leave;
  _share = share;
  _gate1 = gate1;
  _gate2 = gate2;
  _gate3 = gate3;
  _gate4 = gate4;
  _gate5 = gate5;
  _gate6 = gate6;
  _gate7 = gate7;
}

int C_PllMgr::Code(int state) const {
  const auto entry = _codes.find(state);
  return entry == _codes.end() ? 0 : entry->second;
}

// Whether the host had to be brought into another state before it can tell its workers.
bool C_PllMgr::entersToAsk() {
  if (Query(Code(askedFirst)) == 1 || Query(Code(askedSecond)) != 1) return false;
  SetValue(Code(askedSecond), Code(valueBefore));
  Enter();
  return true;
}

int C_PllMgr::NbWorkers() {
  const bool entered = entersToAsk();
  _workers = Query(countOfWorkers);
  if (entered) {
    Leave();
    SetValue(Code(askedSecond), Code(valueAfter));
  }
  return _workers;
}

void C_PllMgr::Run(Call1 function, void* a) {
  _gate1(function, a);
}
void C_PllMgr::Run(Call2 function, void* a, void* b) {
  _gate2(function, a, b);
}
void C_PllMgr::Run(Call3 function, void* a, void* b, void* c) {
  _gate3(function, a, b, c);
}
void C_PllMgr::Run(Call4 function, void* a, void* b, void* c, void* d) {
  _gate4(function, a, b, c, d);
}
void C_PllMgr::Run(Call5 function, void* a, void* b, void* c, void* d, void* e) {
  _gate5(function, a, b, c, d, e);
}
void C_PllMgr::Run(Call6 function, void* a, void* b, void* c, void* d, void* e, void* f) {
  _gate6(function, a, b, c, d, e, f);
}
void C_PllMgr::Run(Call7 function, void* a, void* b, void* c, void* d, void* e, void* f, void* g) {
  _gate7(function, a, b, c, d, e, f, g);
}

C_PllMgr* getGlobalPllManager() {
  return C_PllMgr::getInstance();
}

void ReleaseGlobalPllManager() {
  C_PllMgr::Kill();
}
