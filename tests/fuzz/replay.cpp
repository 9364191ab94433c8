// Runs a fuzz target's entry point over the files of a folder, without a fuzzer: so every build
// and every compiler replays the corpus.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> filesIn(char const* folder) {
  std::vector<std::filesystem::path> files;
  for (auto const& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

void replay(std::filesystem::path const& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<char> const bytes{std::istreambuf_iterator<char>(file), {}};
  std::printf("%s (%zu bytes)\n", path.c_str(), bytes.size());
  std::fflush(stdout);
  LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char** argv) {
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    for (auto const& path : filesIn(argv[i])) {
      replay(path);
      ++count;
    }
  }
  std::printf("%zu files\n", count);
  return count > 0 ? 0 : 1;
}
