// How a view of a file comes about, for both layers of this room. These leave the reason of a
// failure in errno and throw nothing but std::bad_alloc.
#ifndef ZAREL_MAPPING_VIEW_H
#define ZAREL_MAPPING_VIEW_H

#include <zarel/C_MapManager.h>

namespace Zarel {

// The modes of a view.
enum MapMode { mapReading = 0, mapReadWrite = 2 };

// A range of addresses that shows a range of a file.
struct View {
  char* start = nullptr; // what the system unmaps
  char* user = nullptr;  // the byte that was asked for
  unsigned __int64 length = 0;
};

// Opens the file for views of a mode, which creates it where it is to be written; -1 on failure.
int openForViews(const wchar_t* file, int mode);

// Takes the bytes that views of `handles.file` may reach from its status. A file that cannot be
// mapped, an empty one among them, is a failure.
bool takeSize(__2Handles& handles);

// Maps `length` bytes from `offset`, starting at the multiple of `granularity` below. The range
// must lie inside the file as it is and as it was; for writing it gets its place on the disk first.
bool mapView(__2Handles& handles, int mode, unsigned __int64 offset, unsigned __int64 length,
             unsigned __int64 granularity, View& view);

} // namespace Zarel

#endif
