/**
 * @file C_PllMgr.h
 * The seam through which a host brings several threads.
 */
#ifndef ZAREL_C_PLLMGR_H
#define ZAREL_C_PLLMGR_H

#include <map>

#include <zarel/C_Singleton.h>
#include <zarel/export.h>

/**
 * The table of thread-level functions of a run: locks, workers, and gates through which a function
 * is called on workers.
 *
 * The library has no thread layer of its own. A host that has one fills the table in with Init; as
 * long as none does, there is one worker with index 0, locks do nothing and a gate calls its
 * function directly.
 *
 * Threads: create the manager and call Init before parallel work starts; the table has no lock of
 * its own. Lock numbers are the library's; 107 guards the initialization of the memory manager.
 * Failures: `std::bad_alloc` when there is no memory for the manager, else none.
 */
class ZAREL_API C_PllMgr : public C_Singleton<C_PllMgr> {
public:
  using LockFunction = void (*)(int* number);
  using WorkerFunction = int (*)(void);
  using QueryFunction = int (*)(int* code);
  using SetFunction = void (*)(int* code, int* value);
  using StateFunction = void (*)(void);
  using ShareFunction = void (*)(int* count, int* parts, int* part);

  /** @name Functions of one to seven arguments, and the gates that call them @{ */
  using Call1 = void (*)(void*);
  using Call2 = void (*)(void*, void*);
  using Call3 = void (*)(void*, void*, void*);
  using Call4 = void (*)(void*, void*, void*, void*);
  using Call5 = void (*)(void*, void*, void*, void*, void*);
  using Call6 = void (*)(void*, void*, void*, void*, void*, void*);
  using Call7 = void (*)(void*, void*, void*, void*, void*, void*, void*);
  using Gate1 = void (*)(Call1, void*);
  using Gate2 = void (*)(Call2, void*, void*);
  using Gate3 = void (*)(Call3, void*, void*, void*);
  using Gate4 = void (*)(Call4, void*, void*, void*, void*);
  using Gate5 = void (*)(Call5, void*, void*, void*, void*, void*);
  using Gate6 = void (*)(Call6, void*, void*, void*, void*, void*, void*);
  using Gate7 = void (*)(Call7, void*, void*, void*, void*, void*, void*, void*);
  /** @} */

  /**
   * Replaces all fifteen functions at once. None may be null; that is not tested.
   *
   * @param lock takes the lock of a number
   * @param unlock releases the lock of a number
   * @param currentWorker tells the index of the calling worker, from 0
   * @param query tells the value of one of the host's codes
   * @param setValue sets the value of one of the host's codes
   * @param enter enters the state in which the host tells its count of workers
   * @param leave leaves it
   * @param share splits a count: number of parts, and the size of one
   * @param gate1,gate2,gate3,gate4,gate5,gate6,gate7 call a function of that many arguments
   */
  void Init(LockFunction lock, LockFunction unlock, WorkerFunction currentWorker,
            QueryFunction query, SetFunction setValue, StateFunction enter, StateFunction leave,
            ShareFunction share, Gate1 gate1, Gate2 gate2, Gate3 gate3, Gate4 gate4, Gate5 gate5,
            Gate6 gate6, Gate7 gate7);

  /**
   * Asks the host for its count of workers and returns it; 1 without a host.
   *
   * If the host's value of the first code of the table is not 1 and that of the second is 1, the
   * second is set and the state entered before the question, and the state left and the second
   * set back after it.
   */
  int NbWorkers();
  /** Returns the count that NbWorkers got last; -1 before the first time. */
  int LastNbWorkers() const { return _workers; }

  /** Takes the lock of a number. */
  void Lock(int number) { _lock(&number); }
  /** Releases the lock of a number. */
  void Unlock(int number) { _unlock(&number); }
  /** Returns the index of the calling worker, from 0. */
  int CurrentWorker() { return _currentWorker(); }
  /** Returns the value of one of the host's codes; 1 without a host. */
  int Query(int code) { return _query(&code); }
  /** Sets the value of one of the host's codes. */
  void SetValue(int code, int value) { _setValue(&code, &value); }
  /** Enters the state in which the host tells its count of workers. */
  void Enter() { _enter(); }
  /** Leaves that state. */
  void Leave() { _leave(); }
  /** Splits `count` among workers: without a host `parts` is 1 and `part` is `count`. */
  void Share(int count, int& parts, int& part) { _share(&count, &parts, &part); }
  /** Returns the host's code of a state (0 to 11); 0 for a state that the table does not hold. */
  int Code(int state) const;
  /** Returns a limit that is kept for the host: 20000. */
  int Limit() const { return _limit; }

  /** @name The gates: call `function` with the arguments on the host's workers @{ */
  void Run(Call1 function, void* a);
  void Run(Call2 function, void* a, void* b);
  void Run(Call3 function, void* a, void* b, void* c);
  void Run(Call4 function, void* a, void* b, void* c, void* d);
  void Run(Call5 function, void* a, void* b, void* c, void* d, void* e);
  void Run(Call6 function, void* a, void* b, void* c, void* d, void* e, void* f);
  void Run(Call7 function, void* a, void* b, void* c, void* d, void* e, void* f, void* g);
  /** @} */

private:
  friend class C_Singleton<C_PllMgr>;
  C_PllMgr();
  ~C_PllMgr() override;

  bool entersToAsk();

  int _limit = 20000;
  int _workers = -1;
  std::map<int, int> _codes;
  LockFunction _lock;
  LockFunction _unlock;
  WorkerFunction _currentWorker;
  QueryFunction _query;
  SetFunction _setValue;
  StateFunction _enter;
  StateFunction _leave;
  ShareFunction _share;
  Gate1 _gate1;
  Gate2 _gate2;
  Gate3 _gate3;
  Gate4 _gate4;
  Gate5 _gate5;
  Gate6 _gate6;
  Gate7 _gate7;
};

extern template class C_Singleton<C_PllMgr>;

/** Shows the one manager and creates it on first use. Throws `std::bad_alloc`. */
ZAREL_API C_PllMgr* getGlobalPllManager();
/** Deletes the manager if there is one; what a host installed goes with it. */
ZAREL_API void ReleaseGlobalPllManager();

/** Holds a lock of the one manager for as long as it lives, or until the manager is released. */
class C_PllLock {
public:
  explicit C_PllLock(int number) : _number(number) { getGlobalPllManager()->Lock(_number); }
  ~C_PllLock() {
    if (C_PllMgr* const manager = C_PllMgr::Instance()) manager->Unlock(_number);
  }
  C_PllLock(const C_PllLock&) = delete;
  C_PllLock& operator=(const C_PllLock&) = delete;

private:
  int _number;
};

namespace Zarel {
using ::C_PllMgr;
using ::getGlobalPllManager;
using ::ReleaseGlobalPllManager;
} // namespace Zarel

#endif
