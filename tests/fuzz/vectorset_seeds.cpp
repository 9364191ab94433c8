// Writes the seeds of fuzz_vectorset into a folder: small sets of every scalar in both encodings,
// for every storage, with and without gaps and heads, cut, and empty, with bytes behind them, with
// heads that promise too much, and files of another form.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include <zarel/C_vstruct.h>

namespace {

class Corpus {
public:
  explicit Corpus(char const* folder) : folder_(folder) {
    std::filesystem::create_directories(folder_);
  }
  void add(int how, int gap, std::string const& name, std::string const& bytes, int counts = 0) {
    std::ofstream file(folder_ / name, std::ios::binary);
    file.put(static_cast<char>(how));
    file.put(static_cast<char>(gap));
    file.put(static_cast<char>(counts));
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    good_ = good_ && file.flush().good();
  }
  bool good() const { return good_; }

private:
  std::filesystem::path folder_;
  bool good_ = true;
};

std::string word(int value) {
  return {reinterpret_cast<char const*>(&value), sizeof value};
}

/** Three vectors of four values, `gap` bytes between them. */
template <class T>
std::string fileOf(int gap) {
  std::string bytes = word(3) + word(4);
  for (int j = 0; j < 3; ++j) {
    for (int i = 0; i < 4; ++i) {
      const T value(static_cast<float>(10 * j + i));
      bytes.append(reinterpret_cast<char const*>(&value), sizeof value);
    }
    if (j < 2) bytes.append(static_cast<std::size_t>(gap), '\x5a');
  }
  return bytes;
}

template <class T>
void addSets(Corpus& corpus, int scalar) {
  for (int storage = 0; storage < 4; ++storage)
    for (int encoding = 0; encoding < 2; ++encoding) {
      const int how = scalar + 8 * storage + 32 * encoding;
      const std::string name = std::to_string(how);
      const std::string bytes = fileOf<T>(0);
      corpus.add(how, 0, name + "-set", bytes);
      corpus.add(how, 1, name + "-gap", fileOf<T>(16));
      corpus.add(how, 0, name + "-cut", bytes.substr(0, bytes.size() - 3));
      corpus.add(how, 0, name + "-empty", word(0) + word(4));
      corpus.add(how, 0, name + "-empty-many", word(65545) + word(0) + "what follows");
      corpus.add(how, 0, name + "-long", word(3) + word(0x7fffffff) + bytes.substr(8));
      corpus.add(how, 0, name + "-many", word(0x7fffffff) + word(1) + bytes.substr(8));
      corpus.add(how, 0, name + "-negative", word(-3) + word(4) + bytes.substr(8));
      corpus.add(how, 0, name + "-before", bytes + std::string(200, '\x5a'));
      corpus.add(how + 64 + 128, 0, name + "-bare", bytes.substr(8), 3 + 16 * 4);
      corpus.add(how + 64, 0, name + "-length", bytes.substr(4), 3);
      corpus.add(how, 0, name + "-npy", "\x93NUMPY\x01{'descr': '<f8', 'shape': (4, 3), }");
    }
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: vectorset_seeds FOLDER\n", stderr);
    return 2;
  }
  Corpus corpus(argv[1]);
  int scalar = 0;
#define ZAREL_SEEDS(T) addSets<T>(corpus, scalar++);
  ZAREL_MATRIX_SCALARS(ZAREL_SEEDS)
  return corpus.good() ? 0 : 1;
}
