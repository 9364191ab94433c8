// A folder of seeds for a fuzz target, and the program that fills it.
#ifndef TESTS_FUZZ_CORPUS_H
#define TESTS_FUZZ_CORPUS_H

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>

namespace fuzz {

/** Remembers the first failure, so that seeds are added without looking. */
class Corpus {
public:
  explicit Corpus(const char* folder) : folder_(folder) {
    std::filesystem::create_directories(folder_);
  }

  /** A seed: the bytes by which the target makes its choices, then the file. */
  void add(const std::string& name, std::initializer_list<int> choices, const std::string& bytes) {
    std::ofstream file(path(name), std::ios::binary);
    for (const int choice : choices)
      file.put(static_cast<char>(choice));
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    good_ = good_ && file.flush().good();
  }

  /** The same, with the file that `write` makes of a stream; the stream has no buffer. */
  template <class Write>
  void addWritten(const std::string& name, int choice, Write write) {
    FILE* const file = std::fopen(path(name).c_str(), "wb");
    good_ = good_ && file != nullptr;
    if (file == nullptr) return;
    std::setvbuf(file, nullptr, _IONBF, 0);
    std::fputc(choice, file);
    write(file);
    good_ = std::fclose(file) == 0 && good_;
  }

  bool good() const { return good_; }

private:
  std::filesystem::path path(const std::string& name) const { return folder_ / name; }

  std::filesystem::path folder_;
  bool good_ = true;
};

/** The main program: fills the folder that it is given. */
template <class Fill>
int writeCorpus(int argc, char** argv, Fill fill) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
    return 2;
  }
  Corpus corpus(argv[1]);
  fill(corpus);
  return corpus.good() ? 0 : 1;
}

} // namespace fuzz

#endif
