// Vector sets: the mapped range.
#include <zarel/C_vstruct.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include <zarel/C_MessageTool.h>

#include "vectorset/block.h"
#include "vectorset/instantiate.h"
#include "vectorset/steps.h"

namespace Zarel {

/** Bytes from the start of one vector to that of the next one. A gap is one of files alone. */
template <class T>
unsigned __int64 C_VSTRUCT<T>::strideBytes() const {
  const unsigned __int64 gap = coreMode_ == 2 ? blockGap_ : 0;
  return gap + static_cast<unsigned __int64>(leadDimension_) * sizeof(T);
}

template <class T>
unsigned int C_VSTRUCT<T>::MapBlock(unsigned int first, unsigned int last, int* err, bool flag) {
  clear(err);
  return MapBlock(first, last, flag);
}

template <class T>
unsigned int C_VSTRUCT<T>::MapBlock(unsigned int first, unsigned int last, bool) {
  if (this->rows_ == 0) return 0;
  requireValid();
  if (!mapped()) return 0;
  const unsigned int count = static_cast<unsigned int>(this->columns_);
  if (count == 0 || first >= count) fail(OutOfRange);
  last = std::min(last, count - 1);
  if (first > last) fail(OutOfRange);
  if (isMapped(first, last)) return 0;
  UnmapAllBlocks(nullptr);
  mapRange(first, last);
  return lastBlockId_;
}

/** The last vector of a range counts its data alone: what lies behind may be past the file. */
template <class T>
void C_VSTRUCT<T>::mapRange(unsigned int first, unsigned int last) {
  ZAREL_STEP("MapBlock");
  const unsigned __int64 stride = strideBytes();
  const unsigned __int64 data = static_cast<unsigned __int64>(this->rows_) * sizeof(T);
  auto view = withMemory([] { return std::make_unique<C_MapPtr>(); });
  auto block = withMemory([&] {
    blocks_.reserve(1);
    return std::make_unique<_Cblock>();
  });
  const wchar_t* const name = boundName_.empty() ? nullptr : boundName_.c_str();
  withMemory([&] {
    getGlobalMapManager()->MapPtr(view.get(), fileDescriptor_, name, 2,
                                  initialOffSet_ + first * stride, (last - first) * stride + data);
  });
  copies_ = roomForCopies(*view, last - first + 1);
  *block = {view.release(), first, last, ++lastBlockId_};
  blocks_.push_back(block.release());
  attachRange(*blocks_.back());
  highestMapped_ = std::max(highestMapped_, static_cast<int>(last));
  if (first == 0 && static_cast<int>(last) == this->columns_ - 1) base_ = list_[0]->Adr(0);
}

/** Shows the vectors of a range in its view, or in copies where they are not aligned there. */
template <class T>
void C_VSTRUCT<T>::attachRange(_Cblock const& block) {
  char* start = block.view->GetPtrUser();
  unsigned __int64 stride = strideBytes();
  if (!aligned()) {
    forEachCopy([](char* there, T* here, std::size_t bytes) { std::memcpy(here, there, bytes); });
    start = reinterpret_cast<char*>(copies_.data());
    stride = static_cast<unsigned __int64>(leadDimension_) * sizeof(T);
  }
  for (unsigned int j = block.first; j <= block.last; ++j)
    list_[j]->Attach(this->rows_, reinterpret_cast<T*>(start + (j - block.first) * stride));
}

// Vectors that begin at an address which is no multiple of their scalar's alignment cannot be used
// where they are mapped. They are copied into memory instead, and back before they are unmapped.

/** Memory for the vectors of a view, none if they need no copies. It comes after the view, without
 * which the file does not hold what its head promises. */
template <class T>
std::vector<T> C_VSTRUCT<T>::roomForCopies(C_MapPtr& view, unsigned int vectors) {
  if (aligned()) return {};
  try {
    return withMemory([&] { return std::vector<T>(valuesOf(vectors)); });
  } catch (const C_ZarelException&) {
    view.UnMap();
    throw;
  }
}

/** Tells whether every vector of the data file can be used where it is mapped. */
template <class T>
bool C_VSTRUCT<T>::aligned() const {
  return initialOffSet_ % alignof(T) == 0 && strideBytes() % alignof(T) == 0;
}

/** The values from the start of the first to the end of the last of some copies. */
template <class T>
std::size_t C_VSTRUCT<T>::valuesOf(unsigned int vectors) const {
  return static_cast<std::size_t>(vectors - 1) * static_cast<std::size_t>(leadDimension_) +
         static_cast<std::size_t>(this->rows_);
}

/** Calls visit(in the view, copy, bytes) for the vectors of the range. */
template <class T>
template <class Visit>
void C_VSTRUCT<T>::forEachCopy(Visit visit) {
  const _Cblock& block = *blocks_.back();
  const std::size_t bytes = static_cast<std::size_t>(this->rows_) * sizeof(T);
  for (std::size_t k = 0; k <= block.last - block.first; ++k)
    visit(block.view->GetPtrUser() + k * strideBytes(),
          copies_.data() + k * static_cast<std::size_t>(leadDimension_), bytes);
}

/** Brings what changed in the copies into the file. */
template <class T>
void C_VSTRUCT<T>::storeCopies() {
  if (blocks_.empty() || copies_.empty()) return;
  forEachCopy([](char* there, T* here, std::size_t bytes) {
    if (std::memcmp(there, here, bytes) != 0) std::memcpy(there, here, bytes);
  });
}

/** Has the pages of the mapped range ready for a pass over all of them; saves a fault for each. */
template <class T>
void C_VSTRUCT<T>::readMapped() {
  if (!blocks_.empty()) blocks_.back()->view->Advise(E_MapReadAll);
}

template <class T>
void C_VSTRUCT<T>::MapAllBlocks(bool) {
  if (this->rows_ == 0 || this->columns_ == 0) return;
  MapBlock(0, static_cast<unsigned int>(this->columns_ - 1));
  if (!fileResident()) base_ = list_[0]->Adr(0);
}

template <class T>
void C_VSTRUCT<T>::_UnmapBlock(_Cblock* block) {
  if (block == nullptr) return;
  const auto place = std::find(blocks_.begin(), blocks_.end(), block);
  if (place == blocks_.end()) return;
  ZAREL_STEP("_UnmapBlock");
  base_ = nullptr;
  storeCopies();
  std::vector<T>().swap(copies_);
  try {
    getGlobalMapManager()->UnMapPtr(block->view);
  } catch (C_ZarelException& e) {
    C_MessageTool::HandleMessage(e, E_MsgError, 0);
    fail(NotUnmapped, reasonInErrno);
  }
  // The manager reports a refusal itself and leaves the view as it was. The range is forgotten all
  // the same: whether the addresses are free is not known, and a second try could end a mapping of
  // others.
  const bool refused = block->view->GetPtrUser() != nullptr;
  const int error = errno;
  blocks_.erase(place);
  delete block->view;
  delete block;
  errno = error;
  if (refused) fail(NotUnmapped, reasonInErrno);
}

/** Drops the records of ranges that the system does not let go. */
template <class T>
void C_VSTRUCT<T>::forgetBlocks() noexcept {
  for (_Cblock* block : blocks_) {
    delete block->view;
    delete block;
  }
  blocks_.clear();
}

template <class T>
void C_VSTRUCT<T>::UnmapBlock(unsigned int id, int* err) {
  clear(err);
  const auto place =
      std::find_if(blocks_.begin(), blocks_.end(), [&](_Cblock* b) { return b->id == id; });
  if (id != 0 && place != blocks_.end()) _UnmapBlock(*place);
}

template <class T>
void C_VSTRUCT<T>::UnmapBlock(unsigned int first, unsigned int last, int* err) {
  clear(err);
  const auto place = std::find_if(blocks_.begin(), blocks_.end(),
                                  [&](_Cblock* b) { return b->first == first && b->last == last; });
  if (place != blocks_.end()) _UnmapBlock(*place);
}

template <class T>
void C_VSTRUCT<T>::UnmapAllBlocks(int* err) {
  clear(err);
  if (!valid_ || blocks_.empty()) return;
  while (!blocks_.empty())
    _UnmapBlock(blocks_.back());
  lastBlockId_ = 0;
}

template <class T>
_Cblock* C_VSTRUCT<T>::blockOf(unsigned int i) const {
  const auto place = std::find_if(blocks_.begin(), blocks_.end(),
                                  [&](_Cblock* b) { return b->first <= i && i <= b->last; });
  return place == blocks_.end() ? nullptr : *place;
}

template <class T>
bool C_VSTRUCT<T>::isMapped(unsigned int i) {
  return !mapped() || blockOf(i) != nullptr;
}

template <class T>
bool C_VSTRUCT<T>::isMapped(unsigned int first, unsigned int last) {
  if (first > last || !mapped()) return true;
  for (unsigned int i = first; i <= last;) {
    const _Cblock* const block = blockOf(i);
    if (block == nullptr) return false;
    if (block->last >= last) return true;
    i = block->last + 1;
  }
  return true;
}

} // namespace Zarel

ZAREL_INSTANTIATE_VECTORSETS
