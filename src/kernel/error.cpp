#include <algorithm>
#include <cstdio>
#include <utility>

#include <zarel/erreur.h>
#include <zarel/lm_error.h>
#include <zarel/lm_types.h>
#include <zarel/zarelmem.h>

#include "kernel/call.h"
#include "runtime/fail.h"

namespace {

enum { FirstMessage = 3100 };

struct ErrorState {
  LM_ERROR_RECORD records[LM_ERROR_RECORDS];
  int count = 0;
  int status = 0;
  int mode = 0;
  int allocationFlag = 0;
};

ErrorState state;

// Copies a text, cut to the room less its end.
template <size_t room>
void store(char (&to)[room], const char* from) {
  std::snprintf(to, room, "%s", from ? from : "");
}

// The place of a new record; a full table first loses its oldest.
LM_ERROR_RECORD& appended() {
  if (state.count == LM_ERROR_RECORDS) {
    std::copy(state.records + 1, state.records + LM_ERROR_RECORDS, state.records);
    --state.count;
  }
  return state.records[state.count++];
}

} // namespace

void LM_error(const char* file, int number, int line, const char* function, int argument,
              const char* text) {
  char* const message = MSG_get(FirstMessage + number, argument, text ? text : "");
  LM_ERROR_RECORD& record = appended();
  record.number = number;
  record.line = line;
  store(record.message, message);
  store(record.function, function);
  store(record.file, file);
  zarelmem_free(message, __FILE__, __LINE__);
  if (state.mode == 1) Erreur(record.function, record.line, record.file, "%s", record.message);
  state.status = -1;
}

int LM_error_count(void) {
  return state.count;
}

const LM_ERROR_RECORD* LM_error_get(int index) {
  return index >= 0 && index < state.count ? &state.records[index] : nullptr;
}

void LM_error_clear(void) {
  state.count = 0;
}

int LM_error_mode(int mode) {
  return std::exchange(state.mode, mode);
}

int LM_global_status(void) {
  return state.status;
}

int LM_allocation_flag(int flag) {
  return std::exchange(state.allocationFlag, flag);
}

void init_kernel(void) {}

namespace Zarel::kernel {

int allocationFlag() {
  return state.allocationFlag;
}

Call::Call(const char* tag, int argument, const char* text, int* status)
    : _tag(tag), _argument(argument), _text(text), _status(status) {
  state.status = 0;
  if (_status) *_status = 0;
}

Failed Call::fail(int number, const char* file, int line) const {
  LM_error(file, number, line, function(), _argument, _text);
  if (_status) *_status = state.status;
  return {};
}

Failed Call::pass(const char* file, int line) const {
  traced(file, line);
  if (_status) *_status = state.status;
  return {};
}

Failed Call::refuse(const char* file, int line) const {
  fct_Trace(function(), line, file);
  state.status = -1;
  if (_status) *_status = state.status;
  return {};
}

} // namespace Zarel::kernel
