// Writes the seeds of fuzz_collections into a folder: a list file and a run of operations on a
// table, each behind the byte that chooses its reader.
#include <string>

#include "fuzz/corpus.h"

namespace {

using namespace std::string_literals;

// Two texts, "ab" of type 1 and "c" of type 2.
const std::string list = "\x02\0\0\0\x01\0\0\0\x02\0\0\0ab\x02\0\0\0\x01\0\0\0c"s;
// Adds "ab" and "c", searches and deletes "ab", deletes what is not there.
const std::string operations = "\x00\x02"s + "ab" + "\x03\x01"s + "c" + "\x02\x02" + "ab" +
                               "\x01\x02" + "ab" + "\x01\x01" + "x";

} // namespace

int main(int argc, char** argv) {
  return fuzz::writeCorpus(argc, argv, [](fuzz::Corpus& corpus) {
    corpus.add("list", {0}, list);
    corpus.add("cut", {0}, list.substr(0, 17));
    corpus.add("table", {1}, operations);
  });
}
