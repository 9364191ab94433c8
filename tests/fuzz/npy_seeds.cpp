// Writes the seeds of fuzz_npy into a folder: heads as NumPy writes them in all three versions, and
// ones that are cut off, of wrong lengths or of no known kind.
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

/** A head with this text, and a length that may be another than the text's. */
std::string head(char version, const std::string& text, std::size_t length) {
  std::string bytes = "\x93NUMPY"s + version + '\0';
  for (int shift = 0; shift < (version == 1 ? 16 : 32); shift += 8)
    bytes.push_back(static_cast<char>((length >> shift) & 0xff));
  return bytes + text;
}

std::string head(char version, const std::string& text) {
  return head(version, text, text.size());
}

const std::string byColumns = "{'descr': '<f8', 'fortran_order': True, 'shape': (30, 4), }   \n";
const std::string byRows = "{\"shape\": (7,), \"fortran_order\": False, \"descr\": \"<f8\"}";

bool wellFormed(const std::filesystem::path& folder) {
  return seed(folder, "columns", head(1, byColumns)) && seed(folder, "rows", head(2, byRows)) &&
         seed(folder, "later", head(3, byColumns) + "12345678") &&
         seed(folder, "scalar", head(1, "{'descr': '|u1', 'fortran_order': False, 'shape': (), }"));
}

bool malformed(const std::filesystem::path& folder) {
  return seed(folder, "magic", "\x93NUMPY"s) && seed(folder, "version", head(9, byColumns)) &&
         seed(folder, "cut", head(1, byColumns).substr(0, 40)) &&
         seed(folder, "long", head(2, byColumns, 0xffffffff)) &&
         seed(folder, "short", head(1, byColumns, 20)) && seed(folder, "empty", head(1, "")) &&
         seed(folder, "records",
              head(1, "{'descr': [('a', '<f8')], 'fortran_order': False, 'shape': (2,)}")) &&
         seed(folder, "counts",
              head(1, "{'descr': '<f8', 'fortran_order': False, 'shape': (-1, "
                      "99999999999999999999)}")) &&
         seed(folder, "twice",
              head(1, "{'descr': '<f8', 'descr': '<f4', 'shape': (1,), 'shape': (2,)}")) &&
         seed(folder, "open", head(1, "{'descr': '<f8"));
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 1;
  const std::filesystem::path folder = argv[1];
  std::filesystem::create_directories(folder);
  return wellFormed(folder) && malformed(folder) ? 0 : 1;
}
