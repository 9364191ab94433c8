// Files and their names.
#ifndef ZAREL_SYSTEM_FILES_H
#define ZAREL_SYSTEM_FILES_H

#include <cstdio>
#include <string>

namespace Zarel {

// Opens a file that others may read and write at the same time; null and errno on failure.
FILE* openShared(const std::string& name, const char* mode);

bool fileExists(const std::string& name);
bool isRegularFile(const std::string& name);
bool isDirectory(const std::string& name);

// The bytes between the position of a descriptor and the end of its file; -1 if it is no regular
// file.
long long bytesLeft(int fd);

// The directory part of a path, without the "/" behind it unless it is the root; empty if none.
std::string directoryOf(const std::string& name);
// What stands behind the last "/".
std::string fileNameOf(const std::string& name);
// The path without the extension of its last part. A point at the head of that part starts none.
std::wstring withoutExtension(const std::wstring& name);

} // namespace Zarel

#endif
