#include "model_file.h"

#include "app_support.h"
#include "library.h"
#include "surrogate.h"

#include <cmath>

using namespace app;
using apptest::failureOf;

namespace {

class ModelFiles : public apptest::InFolder {
protected:
  void SetUp() override {
    library::install(); // no traces on standard error
    samples_.inputs.names = {"p", "q"};
    samples_.outputs.names = {"u", "v"};
    for (int i = 0; i < 12; ++i) {
      const double p = std::cos(2.4 * i);
      const double q = std::sin(1.7 * i);
      samples_.inputs.values.insert(samples_.inputs.values.end(), {p, q});
      samples_.outputs.values.insert(samples_.outputs.values.end(), {p * q, p - q * q});
    }
    ModelOptions options;
    options.optimise = false;
    options.dropTolerance = 1e-7;
    buildList(samples_, options, list_, notes_);
    fitModels(list_, notes_, console_);
    saveModel(path("m"), false, list_, notes_);
    bytes_ = read("m");
  }

  Failure reading(const std::string& bytes) {
    std::filesystem::remove(path("t")); // a new file costs less than one cut to nothing
    write("t", bytes);
    return failureOf([&] {
      KrigingList<double> list;
      ModelNotes notes;
      readModel(path("t"), list, notes);
    });
  }

  Samples samples_;
  Console console_;
  KrigingList<double> list_;
  ModelNotes notes_;
  std::string bytes_;
};

TEST_F(ModelFiles, KeepNamesAndTolerances) {
  KrigingList<double> list;
  ModelNotes notes;
  readModel(path("m"), list, notes);
  EXPECT_EQ(notes.inputs, notes_.inputs);
  EXPECT_EQ(notes.outputs, notes_.outputs);
  EXPECT_EQ(notes.dropTolerance, 1e-7);
  double tolerance = 0;
  list.GetItemKriging(1)->GetDropToler(tolerance);
  EXPECT_EQ(tolerance, 1e-7);
}

TEST_F(ModelFiles, BeginWithTheLibrarysOwnStream) {
  std::FILE* file = std::fopen(path("plain").c_str(), "wb");
  ASSERT_EQ(list_.Write(file), 0);
  std::fclose(file);
  const std::string plain = read("plain");
  EXPECT_EQ(bytes_.substr(0, plain.size()), plain);
  EXPECT_EQ(bytes_.substr(bytes_.size() - 8), "ZRLNOTE1");
}

/** The footer as docs/formats/program.md tells it, computed here by hand. */
TEST_F(ModelFiles, EndWithTheFooterThatIsDocumented) {
  std::uint64_t words[3];
  std::memcpy(words, bytes_.data() + bytes_.size() - 32, sizeof words);
  EXPECT_EQ(words[0] + words[1] + 32, bytes_.size());
  EXPECT_EQ(bytes_[words[0]], '{');
  EXPECT_EQ(bytes_[words[0] + words[1] - 1], '}');
  std::uint64_t sum = 14695981039346656037u;
  for (std::size_t i = 0; i < bytes_.size() - 16; ++i) {
    sum ^= static_cast<unsigned char>(bytes_[i]);
    sum *= 1099511628211u;
  }
  EXPECT_EQ(words[2], sum);
}

TEST_F(ModelFiles, WithoutNotesGetMadeUpNames) {
  std::FILE* file = std::fopen(path("plain").c_str(), "wb");
  ASSERT_EQ(list_.Write(file), 0);
  std::fclose(file);
  KrigingList<double> list;
  ModelNotes notes;
  readModel(path("plain"), list, notes);
  EXPECT_FALSE(notes.stored);
  EXPECT_EQ(notes.inputs, (std::vector<std::string>{"x1", "x2"}));
  EXPECT_EQ(notes.outputs, (std::vector<std::string>{"y1", "y2"}));
}

TEST_F(ModelFiles, CutAtAnyByteAreRefused) {
  std::uint64_t list = 0;
  std::memcpy(&list, bytes_.data() + bytes_.size() - 32, sizeof list);
  for (std::size_t size = 0; size < bytes_.size(); ++size) {
    if (size == list) continue; // the library's stream alone is a model without notes
    ASSERT_EQ(reading(bytes_.substr(0, size)).code, ExitCode::badInput) << size;
  }
}

TEST_F(ModelFiles, WithAnyByteFlippedAreRefused) {
  // The magic alone is not in the checksum; without it, bytes are left behind the list.
  for (std::size_t at = 0; at < bytes_.size(); ++at) {
    std::string bytes = bytes_;
    bytes[at] = static_cast<char>(bytes[at] ^ 0xff);
    ASSERT_EQ(reading(bytes).code, ExitCode::badInput) << at;
  }
}

/** The library's own stream has no checksum: anything may come of it but a crash. */
TEST_F(ModelFiles, PlainStreamsWithAFlippedByteDoNoHarm) {
  std::uint64_t size = 0;
  std::memcpy(&size, bytes_.data() + bytes_.size() - 32, sizeof size);
  for (std::size_t at = 0; at < size; ++at) {
    std::string bytes = bytes_.substr(0, size);
    bytes[at] = static_cast<char>(bytes[at] ^ 0x80);
    std::filesystem::remove(path("t"));
    write("t", bytes);
    KrigingList<double> list;
    ModelNotes notes;
    try {
      readModel(path("t"), list, notes);
      modelFacts(list, notes);
    } catch (const Failure& failure) {
      ASSERT_EQ(failure.code, ExitCode::badInput);
    }
  }
}

TEST_F(ModelFiles, NeedSolvedModels) {
  KrigingList<double> list;
  ModelNotes notes;
  buildList(samples_, ModelOptions(), list, notes);
  EXPECT_EQ(failureOf([&] { saveModel(path("n"), false, list, notes); }).code, ExitCode::numerical);
  EXPECT_EQ(count(), 1);
}

} // namespace
