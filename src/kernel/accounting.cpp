#include <algorithm>
#include <cstdio>
#include <utility>

#include <zarel/lm_bitvec.h>
#include <zarel/lm_error.h>
#include <zarel/lm_ivec.h>
#include <zarel/lm_mat.h>
#include <zarel/lm_memory.h>
#include <zarel/lm_morse.h>
#include <zarel/lm_perm.h>
#include <zarel/lm_vec.h>

#include "kernel/accounting.h"
#include "kernel/record.h"

namespace Zarel::kernel {

namespace {

// A free function as the table calls it.
template <class Record, int (*release)(Record*)>
int freeAs(void* object) {
  return release(static_cast<Record*>(object));
}
template <class Record, void (*release)(Record*)>
int freeQuietly(void* object) {
  if (!object) return -1;
  release(static_cast<Record*>(object));
  return 0;
}

const char* const typeNames[LM_TYPE_COUNT] = {"MAT",   "BAND",    "PERM",  "VEC",  "IVEC", "ITER",
                                              "SPROW", "SPMAT",   "ZVEC",  "ZMAT", "LVEC", "VECM",
                                              "VECMP", "VSTRUCT", "VECMW", "BVEC"};

const MEM_FREE typeFrees[LM_TYPE_COUNT] = {freeAs<MAT, m_free>,
                                           freeAs<MAT, m_free>, // BAND: nothing makes one
                                           freeAs<PERM, px_free>,
                                           freeAs<VEC, v_free>,
                                           freeAs<IVEC, iv_free>,
                                           freeAs<MAT, m_free>, // ITER
                                           freeAs<MAT, m_free>, // SPROW
                                           freeAs<MAT, m_free>, // SPMAT
                                           freeAs<ZVEC, zv_free>,
                                           freeAs<ZMAT, zm_free>,
                                           freeAs<LVEC, lv_free>,
                                           freeQuietly<VECM, vecm_free>,
                                           freeQuietly<VECMP, vecmp_free>,
                                           nullptr, // VSTRUCT: its room brings no maker yet
                                           freeQuietly<VECMW, vecmw_free>,
                                           freeAs<BVEC, LM_bv_free>};

MEM_ENTRY typeEntries[LM_TYPE_COUNT];

TypeList lists[MEM_LISTS] = {{LM_TYPE_COUNT, typeNames, typeFrees, typeEntries}};
bool isOn = false;

MEM_ENTRY* entryOf(int type, int list) {
  const TypeList* const types = attachedList(list);
  return types && type >= 0 && type < types->count ? types->table + type : nullptr;
}

void warnBelowZero(const char* what, int type, int list) {
  const char* const name = attachedList(list)->names[type];
  for (FILE* const stream : {stderr, stdout})
    std::fprintf(stream,
                 "\n WARNING !! memory info: allocated %s is less than 0\n"
                 "\t TYPE %s \n\n",
                 what, name ? name : "");
}

char plural(long number) {
  return number == 1 ? ' ' : 's';
}

// One line of a list: a head of its own, the figures, and what ends it.
void printFigures(FILE* file, const MEM_ENTRY& entry, const char* end) {
  std::fprintf(file, " %10ld alloc. byte%c  %6d alloc. variable%c%s", entry.bytes,
               plural(entry.bytes), entry.numvar, plural(entry.numvar), end);
}

} // namespace

const TypeList* attachedList(int list) {
  return list >= 0 && list < MEM_LISTS && lists[list].table ? lists + list : nullptr;
}

void account(int type, long before, long after, int change) {
  if (!isOn) return;
  mem_bytes_list(type, before, after, 0);
  if (change != 0) mem_numvar_list(type, change, 0);
}

} // namespace Zarel::kernel

using namespace Zarel::kernel;

int mem_info_on(int on) {
  return std::exchange(isOn, on != 0) ? 1 : 0;
}

int mem_info_is_on(void) {
  return isOn ? 1 : 0;
}

int mem_attach_list(int list, int count, const char* const* names, const MEM_FREE* free_functions,
                    MEM_ENTRY* table) {
  if (list < 0 || list >= MEM_LISTS || count < 0 || !names || !free_functions || !table) return -1;
  if (attachedList(list)) LM_error(__FILE__, 21, __LINE__, "mem_attach_list", list, nullptr);
  std::fill_n(table, count, MEM_ENTRY());
  lists[list] = {count, names, free_functions, table};
  return 0;
}

int mem_detach_list(int list) {
  if (list == 0 || !attachedList(list)) return -1;
  lists[list] = TypeList();
  return 0;
}

void mem_bytes_list(int type, long old_size, long new_size, int list) {
  MEM_ENTRY* const entry = isOn ? entryOf(type, list) : nullptr;
  if (!entry) return;
  entry->bytes += new_size - old_size;
  if (entry->bytes < 0) warnBelowZero("memory", type, list);
}

void mem_numvar_list(int type, int change, int list) {
  MEM_ENTRY* const entry = isOn ? entryOf(type, list) : nullptr;
  if (!entry) return;
  entry->numvar += change;
  if (entry->numvar < 0) warnBelowZero("# of variables", type, list);
}

long mem_info_bytes(int type, int list) {
  const MEM_ENTRY* const entry = entryOf(type, list);
  return entry ? entry->bytes : 0;
}

int mem_info_numvar(int type, int list) {
  const MEM_ENTRY* const entry = entryOf(type, list);
  return entry ? entry->numvar : 0;
}

void mem_info_file(FILE* file, int list) {
  const TypeList* const types = attachedList(list);
  if (!types) return;
  FILE* const to = file ? file : stdout;
  if (list == 0)
    std::fputs(" MEMORY INFORMATION (standard types):\n", to);
  else
    std::fprintf(to, " MEMORY INFORMATION (list no. %d):\n", list);
  MEM_ENTRY total = {0, 0};
  for (int type = 0; type < types->count; ++type) {
    const MEM_ENTRY& entry = types->table[type];
    total.bytes += entry.bytes;
    total.numvar += entry.numvar;
    if (!types->names[type]) continue;
    std::fprintf(to, " type %-7s", types->names[type]);
    printFigures(to, entry, "\n");
  }
  std::fprintf(to, " %-12s", "total:");
  printFigures(to, total, "\n\n");
}
