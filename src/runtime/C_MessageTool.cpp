// The table of tools, and what a tool knows of itself.
#include <zarel/C_MessageTool.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <new>

#include "runtime/access.h"
#include "system/environment.h"

namespace Zarel {

namespace {

struct TextLess {
  bool operator()(const char* a, const char* b) const { return std::strcmp(a, b) < 0; }
};

using Table = std::map<char*, C_MessageTool*, TextLess>;
using TableKey = std::unique_ptr<char, void (*)(void*)>;

C_MessageTool* lastTool = nullptr;

// The table hangs on a plain pointer, so that messages sent by late destructors find either the
// table or none, never a dead one.
Table* table = nullptr;

struct TableEnd {
  ~TableEnd() {
    while (table && !table->empty())
      delete table->begin()->second;
    delete table;
    table = nullptr;
  }
};

Table& liveTable() {
  static TableEnd end;
  static_cast<void>(&end);
  if (!table) table = new Table;
  return *table;
}

TableKey copyOfKey(const std::string& key) {
  TableKey copy(::strdup(key.c_str()), std::free);
  if (!copy) throw std::bad_alloc();
  return copy;
}

char* keyIn(const std::string& key) {
  return const_cast<char*>(key.c_str());
}

// Takes a tool and the copy of its key out of the table.
void forget(const std::string& key, const C_MessageTool* tool) {
  if (!table) return;
  const auto found = table->find(keyIn(key));
  if (found == table->end() || found->second != tool) return;
  const TableKey copy(found->first, std::free);
  table->erase(found);
}

} // namespace

C_MessageTool* C_MessageTool::Instance(const std::string& key) {
  try {
    Table& tools = liveTable();
    const auto found = tools.find(keyIn(key));
    if (found != tools.end()) {
      if (found->second->_initialized) lastTool = found->second;
      return found->second;
    }
    TableKey copy = copyOfKey(key);
    std::unique_ptr<C_MessageTool> tool(new C_MessageTool(key));
    tools.emplace(copy.get(), tool.get());
    static_cast<void>(copy.release()); // the table owns it now
    return tool.release();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

bool C_MessageTool::HasInstance(const std::string& key) {
  return table && table->count(keyIn(key)) != 0;
}

C_MessageTool* C_MessageTool::LastInstance() {
  return lastTool;
}

C_MessageTool::C_MessageTool(const std::string& key)
    : _key(key),
      _log(nullptr),
      _append(true),
      _initialized(false),
      _progressOpen(false),
      _progressStopped(false),
      _progressMax(0),
      _progressValue(0),
      _database(nullptr),
      _language(0),
      _end(' ') {
  ActivateDebugScope(-1, true, ALL_STREAMS);
  if (const auto level = environment("ZAREL_VERBOSITY"))
    setVerbosityLevel(numberIn(level->c_str()), ALL_STREAMS);
  ResetMessageStreamCtrl(ALL_STREAMS);
}

C_MessageTool::~C_MessageTool() {
  if (lastTool == this) lastTool = nullptr;
  _initialized = false;
  delete _database;
  C_MessageTool::closeLogFile();
  forget(_key, this);
}

void C_MessageTool::setEndMsgChar(char end) {
  _end = end;
}
bool C_MessageTool::isInitialized() const {
  return _initialized;
}
std::string C_MessageTool::getKey() const {
  return _key;
}
std::string C_MessageTool::getLogFilename() const {
  return _logName;
}

C_MessageStreamCtrl* MessageToolAccess::controller(C_MessageTool& tool, int stream) {
  C_MessageStreamCtrl* own = tool._streams[stream].ctrl;
  return own ? own : tool._streams[SCREEN].ctrl;
}

} // namespace Zarel
