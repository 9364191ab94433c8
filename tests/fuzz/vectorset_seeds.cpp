// Writes the seeds of fuzz_vectorset into a folder: small sets of every scalar in both encodings,
// for every storage, with and without gaps and heads, cut, and empty, with bytes behind them, with
// heads that promise too much, and files of another form.
#include <string>

#include <zarel/C_vstruct.h>

#include "fuzz/corpus.h"

using fuzz::Corpus;

namespace {

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
      corpus.add(name + "-set", {how, 0, 0}, bytes);
      corpus.add(name + "-gap", {how, 16, 0}, fileOf<T>(16));
      corpus.add(name + "-odd", {how, 3, 0}, fileOf<T>(3));
      corpus.add(name + "-cut", {how, 0, 0}, bytes.substr(0, bytes.size() - 3));
      corpus.add(name + "-empty", {how, 0, 0}, word(0) + word(4));
      corpus.add(name + "-empty-many", {how, 0, 0}, word(65545) + word(0) + "what follows");
      corpus.add(name + "-long", {how, 0, 0}, word(3) + word(0x7fffffff) + bytes.substr(8));
      corpus.add(name + "-many", {how, 0, 0}, word(0x7fffffff) + word(1) + bytes.substr(8));
      corpus.add(name + "-negative", {how, 0, 0}, word(-3) + word(4) + bytes.substr(8));
      corpus.add(name + "-before", {how, 0, 0}, bytes + std::string(200, '\x5a'));
      corpus.add(name + "-bare", {how + 64 + 128, 0, 3 + 16 * 4}, bytes.substr(8));
      corpus.add(name + "-length", {how + 64, 0, 3}, bytes.substr(4));
      corpus.add(name + "-promise", {how + 64, 0, 3}, word(0x60ffff00) + bytes.substr(8));
      corpus.add(name + "-npy", {how, 0, 0}, "\x93NUMPY\x01{'descr': '<f8', 'shape': (4, 3), }");
    }
}

} // namespace

int main(int argc, char** argv) {
  return fuzz::writeCorpus(argc, argv, [](Corpus& corpus) {
    int scalar = 0;
#define ZAREL_SEEDS(T) addSets<T>(corpus, scalar++);
    ZAREL_MATRIX_SCALARS(ZAREL_SEEDS)
  });
}
