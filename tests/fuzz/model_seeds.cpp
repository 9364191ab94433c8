// Writes the seeds of fuzz_model into a folder: small models and lists of every shape that the
// files have, each behind the byte that chooses its reader.
#include <string>

#include "fuzz/corpus.h"
#include "kriging/ListFixture.h"

using fuzz::Corpus;
using namespace kriging_test;

namespace {

enum Reader : char { RealModel, ComplexModel, RealList, ComplexList, OldReal, OldComplex };

template <class T>
void addModels(Corpus& corpus, Reader reader, Reader oldReader, std::string const& name) {
  for (int shape = 0; shape < 4; ++shape) {
    OpenModel<T> model;
    makeSolved(model, 4, 1 + shape % 2, 1 + shape / 2, shape, shape, shape % 2);
    std::string const bytes = written(model);
    corpus.add(name + "-model-" + std::to_string(shape), {reader}, bytes);
    if (shape == 3) corpus.add(name + "-old", {oldReader}, bytes.substr(7));
  }
}

template <class T>
void addList(Corpus& corpus, Reader reader, std::string const& name) {
  OpenList<T> list;
  makeSolvedList(list, {1, 2}, 3, 1);
  corpus.add(name + "-list", {reader}, written(list));
}

} // namespace

int main(int argc, char** argv) {
  return fuzz::writeCorpus(argc, argv, [](Corpus& corpus) {
    addModels<double>(corpus, RealModel, OldReal, "real");
    addModels<std::complex<double>>(corpus, ComplexModel, OldComplex, "complex");
    addList<double>(corpus, RealList, "real");
    addList<std::complex<double>>(corpus, ComplexList, "complex");
  });
}
