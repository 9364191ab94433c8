// Writes the seeds of fuzz_model into a folder: small models and lists of every shape that the
// files have, each behind the byte that chooses its reader.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "kriging/ListFixture.h"

using namespace kriging_test;

namespace {

enum Reader : char { RealModel, ComplexModel, RealList, ComplexList, OldReal, OldComplex };

class Corpus {
public:
  explicit Corpus(char const* folder) : folder_(folder) {
    std::filesystem::create_directories(folder_);
  }

  void add(Reader reader, std::string const& name, std::string const& bytes) {
    std::ofstream file(folder_ / name, std::ios::binary);
    file.put(static_cast<char>(reader));
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    good_ = good_ && file.flush().good();
  }

  bool good() const { return good_; }

private:
  std::filesystem::path folder_;
  bool good_ = true;
};

template <class T>
void addModels(Corpus& corpus, Reader reader, Reader oldReader, std::string const& name) {
  for (int shape = 0; shape < 4; ++shape) {
    OpenModel<T> model;
    makeSolved(model, 4, 1 + shape % 2, 1 + shape / 2, shape, shape, shape % 2);
    std::string const bytes = written(model);
    corpus.add(reader, name + "-model-" + std::to_string(shape), bytes);
    if (shape == 3) corpus.add(oldReader, name + "-old", bytes.substr(7));
  }
}

template <class T>
void addList(Corpus& corpus, Reader reader, std::string const& name) {
  OpenList<T> list;
  makeSolvedList(list, {1, 2}, 3, 1);
  corpus.add(reader, name + "-list", written(list));
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: model_seeds FOLDER\n", stderr);
    return 2;
  }
  Corpus corpus(argv[1]);
  addModels<double>(corpus, RealModel, OldReal, "real");
  addModels<std::complex<double>>(corpus, ComplexModel, OldComplex, "complex");
  addList<double>(corpus, RealList, "real");
  addList<std::complex<double>>(corpus, ComplexList, "complex");
  return corpus.good() ? 0 : 1;
}
