// Where a virtual operation stands in its class's table. Hosts that call through a table by
// position count on the order in which the operations were declared.
#ifndef TESTS_SUPPORT_SLOTS_H
#define TESTS_SUPPORT_SLOTS_H

#include <cstddef>
#include <cstring>
#include <vector>

namespace support {

// The number of the slot, counted from the head of the table. A pointer to a virtual member
// function holds its offset in the table, plus 1 (Itanium C++ ABI, 2.3).
template <class Member>
std::ptrdiff_t slotOf(Member member) {
  std::ptrdiff_t words[2];
  static_assert(sizeof member == sizeof words, "the layout that the ABI tells");
  std::memcpy(words, &member, sizeof words);
  return (words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

template <class... Members>
std::vector<std::ptrdiff_t> slotsOf(Members... members) {
  return {slotOf(members)...};
}

// The numbers from `first` on, without a gap, as many as there are in `slots`.
inline std::vector<std::ptrdiff_t> consecutive(std::ptrdiff_t first,
                                               const std::vector<std::ptrdiff_t>& slots) {
  std::vector<std::ptrdiff_t> all(slots.size());
  for (std::size_t k = 0; k < all.size(); ++k)
    all[k] = first + static_cast<std::ptrdiff_t>(k);
  return all;
}

// Slots of a destructor, which stands at the head of each table: one that destroys, one that also
// releases.
constexpr std::ptrdiff_t afterDestructor = 2;

} // namespace support

#endif
