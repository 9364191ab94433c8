// Vector sets: the mapped range.
#include <zarel/C_vstruct.h>

#include <algorithm>
#include <cerrno>
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
  const wchar_t* const name = presentName().empty() ? nullptr : presentName().c_str();
  withMemory([&] {
    getGlobalMapManager()->MapPtr(view.get(), fileDescriptor_, name, 2,
                                  initialOffSet_ + first * stride, (last - first) * stride + data);
  });
  T* const start = reinterpret_cast<T*>(view->GetPtrUser());
  *block = {view.release(), first, last, ++lastBlockId_};
  blocks_.push_back(block.release());
  for (unsigned int j = first; j <= last; ++j)
    list_[j]->Attach(this->rows_, reinterpret_cast<T*>(blocks_.back()->view->GetPtrUser() +
                                                       (j - first) * stride));
  highestMapped_ = std::max(highestMapped_, static_cast<int>(last));
  if (first == 0 && static_cast<int>(last) == this->columns_ - 1) base_ = start;
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
