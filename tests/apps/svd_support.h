/** Runs of zarel svd: vectors to decompose, and what came of them. */
#ifndef ZAREL_TESTS_APPS_SVD_SUPPORT_H
#define ZAREL_TESTS_APPS_SVD_SUPPORT_H

#include "program_support.h"
#include "snapshot_files.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace apptest {

constexpr std::size_t total = 9, length = 40; ///< of the vectors that most tests use

/** Three directions of falling strength, mixed by cosines. */
inline Vectors mixture(std::size_t count = total, std::size_t rows = length) {
  Vectors vectors;
  for (std::size_t j = 0; j < count; ++j) {
    std::vector<double> column(rows);
    for (std::size_t i = 0; i < rows; ++i)
      for (std::size_t k = 0; k < 3; ++k)
        column[i] += std::pow(0.1, static_cast<double>(k)) *
                     std::cos(static_cast<double>((k + 1) * i) / 9.0) *
                     std::cos(static_cast<double>(k * j) / 3.0 + 1);
    vectors.columns.push_back(column);
  }
  return vectors;
}

/** A vector set file as vectors. */
inline Vectors vectorsOf(const std::string& bytes) {
  std::int32_t counts[2] = {0, 0};
  EXPECT_GE(bytes.size(), sizeof counts);
  std::memcpy(counts, bytes.data(), sizeof counts);
  Vectors vectors;
  const std::size_t one = static_cast<std::size_t>(counts[1]) * sizeof(double);
  EXPECT_EQ(bytes.size(), sizeof counts + static_cast<std::size_t>(counts[0]) * one);
  for (std::size_t j = 0; j < static_cast<std::size_t>(counts[0]); ++j) {
    vectors.columns.emplace_back(static_cast<std::size_t>(counts[1]));
    std::memcpy(vectors.columns.back().data(), bytes.data() + sizeof counts + j * one, one);
  }
  return vectors;
}

inline double dot(const std::vector<double>& a, const std::vector<double>& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i)
    sum += a[i] * b[i];
  return sum;
}

/** The largest departure of a basis from orthonormality. */
inline double departure(const Vectors& basis) {
  double largest = 0;
  for (std::size_t i = 0; i < basis.count(); ++i)
    for (std::size_t j = 0; j <= i; ++j)
      largest = std::max(largest,
                         std::fabs(dot(basis.columns[i], basis.columns[j]) - (i == j ? 1.0 : 0.0)));
  return largest;
}

class SvdProgram : public Program {
protected:
  Outcome svd(const Words& more, const Around& around = {}) const {
    Words words{"svd"};
    words.insert(words.end(), more.begin(), more.end());
    return zarel(words, around);
  }
  /** Files that are not hidden, which is what a user finds. */
  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder_))
      found.push_back(entry.path().filename().string());
    std::sort(found.begin(), found.end());
    return found;
  }

  const Vectors vectors_ = mixture();
  const std::string set_ = write("vectors.set", setFile(vectors_));
};

} // namespace apptest

#endif
