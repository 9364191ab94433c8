// The vocabulary of the tests of the memory manager: a host with its own manager and its own
// functions.
#ifndef ZAREL_TESTS_MEMORY_SUPPORT_H
#define ZAREL_TESTS_MEMORY_SUPPORT_H

#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <zarel/C_MemManager.h>

namespace memory_test {

using u64 = unsigned __int64;

#define HERE "test", __FILE__, __LINE__

// A manager of a host: it can be built, and notes its calls.
class HostManager : public C_MemManager {
public:
  void* Malloc(u64 size, const char* name, const char* file, int line) override {
    note("Malloc", size, name, file, line);
    return C_MemManager::Malloc(size, name, file, line);
  }
  void* Calloc(u64 number, u64 size, const char* name, const char* file, int line) override {
    note("Calloc " + std::to_string(number), size, name, file, line);
    return C_MemManager::Calloc(number, size, name, file, line);
  }
  void* Realloc(void* block, u64 size, const char* name, const char* file, int line) override {
    note("Realloc", size, name, file, line);
    return C_MemManager::Realloc(block, size, name, file, line);
  }
  void Free(void* block, const char* file, int line) override {
    note("Free", 0, "", file, line);
    C_MemManager::Free(block, file, line);
  }
  void HandleError() override { ++errors; }
  __int64 AllocMem() override { return resident < 0 ? C_MemManager::AllocMem() : resident; }
  __int64 InfoMem(int key) override {
    lastKey = key;
    return C_MemManager::InfoMem(key);
  }

  int errors = 0;
  int lastKey = 0;
  __int64 resident = -1;
  std::vector<std::string> asked; // "Malloc size name file line" and the like, while `noting`
  bool noting = false;

private:
  void note(const std::string& operation, u64 size, const char* name, const char* file, int line) {
    if (!noting) return;
    asked.push_back(operation + " " + std::to_string(size) + " " + name + " " + file + " " +
                    std::to_string(line));
  }
};

// What the host's functions were given.
struct HostCall {
  std::string name;
  void* block = nullptr;
  u64 size = 0;
  int zero = -1;
  std::string file;
  int line = 0;
};
inline std::vector<HostCall> calls;
inline std::vector<int> keys;

inline void* hostCalloc(u64 size, int zero, char* file, int line) {
  calls.push_back({"calloc", nullptr, size, zero, file, line});
  return std::calloc(1, size);
}
inline void* hostMalloc(u64 size, int zero, char* file, int line) {
  calls.push_back({"malloc", nullptr, size, zero, file, line});
  return std::malloc(size);
}
inline void* hostRealloc(void* block, u64 size, int zero, char* file, int line) {
  calls.push_back({"realloc", block, size, zero, file, line});
  return std::realloc(block, size);
}
inline void hostFree(void* block, char* file, int line) {
  calls.push_back({"free", block, 0, 0, file, line});
  std::free(block);
}
inline __int64 hostInfo(int* key, int* zero) {
  keys.push_back(*key);
  return 1000 * *key + *zero;
}
inline void* noMalloc(u64, int, char*, int) {
  return nullptr;
}
inline void* noRealloc(void*, u64, int, char*, int) {
  return nullptr;
}

class MemManager : public testing::Test {
protected:
  MemManager() {
    calls.clear();
    keys.clear();
  }

  void useHost() { manager.Init(hostCalloc, hostMalloc, hostRealloc, hostFree, hostInfo); }

  HostManager manager;
};

} // namespace memory_test

#endif
