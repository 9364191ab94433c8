// Figures of the machine and of the process, as the system tells them. Nothing is allocated: they
// are asked for when memory is short, too.
#ifndef ZAREL_SYSTEM_MACHINE_H
#define ZAREL_SYSTEM_MACHINE_H

namespace Zarel {

// All of these return -1 when the system does not tell.

// A line of /proc/meminfo, in bytes.
long long memoryFigure(const char* name);
// The bytes of memory that this process occupies.
long long residentBytes();
// Of all processes together.
long long openFileCount();
long long threadCount();
long long processCount();

} // namespace Zarel

#endif
