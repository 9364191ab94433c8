// Writes the seeds of fuzz_npy into a folder: heads as NumPy writes them in all three versions, and
// ones that are cut off, of wrong lengths or of no known kind.
#include <string>

#include "fuzz/corpus.h"

using fuzz::Corpus;

namespace {

using namespace std::string_literals;

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

void wellFormed(Corpus& corpus) {
  corpus.add("columns", {}, head(1, byColumns));
  corpus.add("rows", {}, head(2, byRows));
  corpus.add("later", {}, head(3, byColumns) + "12345678");
  corpus.add("scalar", {}, head(1, "{'descr': '|u1', 'fortran_order': False, 'shape': (), }"));
}

void malformed(Corpus& corpus) {
  const auto addText = [&](const char* name, const char* text) {
    corpus.add(name, {}, head(1, text));
  };
  corpus.add("magic", {}, "\x93NUMPY");
  corpus.add("version", {}, head(9, byColumns));
  corpus.add("cut", {}, head(1, byColumns).substr(0, 40));
  corpus.add("long", {}, head(2, byColumns, 0xffffffff));
  corpus.add("short", {}, head(1, byColumns, 20));
  addText("empty", "");
  addText("records", "{'descr': [('a', '<f8')], 'fortran_order': False, 'shape': (2,)}");
  addText("counts",
          "{'descr': '<f8', 'fortran_order': False, 'shape': (-1, 99999999999999999999)}");
  addText("twice", "{'descr': '<f8', 'descr': '<f4', 'shape': (1,), 'shape': (2,)}");
  addText("open", "{'descr': '<f8");
}

} // namespace

int main(int argc, char** argv) {
  return fuzz::writeCorpus(argc, argv, [](Corpus& corpus) {
    wellFormed(corpus);
    malformed(corpus);
  });
}
