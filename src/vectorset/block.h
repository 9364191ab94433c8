// The record of a mapped range.
#ifndef ZAREL_VECTORSET_BLOCK_H
#define ZAREL_VECTORSET_BLOCK_H

#include <zarel/C_MapManager.h>

namespace Zarel {

struct _Cblock {
  C_MapPtr* view;
  unsigned int first;
  unsigned int last;
  unsigned int id;
};

} // namespace Zarel

#endif
