// Writes the seeds of fuzz_collections into a folder: a list file and a run of operations on a
// table, each behind the byte that chooses its reader.
#include <filesystem>
#include <fstream>
#include <string>

namespace {

using namespace std::string_literals;

bool seed(const std::filesystem::path& folder, const char* name, const std::string& bytes) {
  std::ofstream file(folder / name, std::ios::binary);
  file << bytes;
  file.close();
  return !file.fail();
}

// Two texts, "ab" of type 1 and "c" of type 2.
const std::string list = "\x02\0\0\0\x01\0\0\0\x02\0\0\0ab\x02\0\0\0\x01\0\0\0c"s;
// Adds "ab" and "c", searches and deletes "ab", deletes what is not there.
const std::string operations = "\x00\x02"s + "ab" + "\x03\x01"s + "c" + "\x02\x02" + "ab" +
                               "\x01\x02" + "ab" + "\x01\x01" + "x";

} // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 1;
  const std::filesystem::path folder = argv[1];
  std::filesystem::create_directories(folder);
  const bool good = seed(folder, "list", "\0"s + list) &&
                    seed(folder, "cut", "\0"s + list.substr(0, 17)) &&
                    seed(folder, "table", "\x01" + operations);
  return good ? 0 : 1;
}
