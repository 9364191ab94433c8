/** Files of vectors as other programs write them, byte by byte. */
#ifndef ZAREL_TESTS_APPS_SNAPSHOT_FILES_H
#define ZAREL_TESTS_APPS_SNAPSHOT_FILES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace apptest {

/** Numbers as a machine with the low byte first has them in memory. */
template <class Number>
std::string bytesOf(const std::vector<Number>& numbers) {
  std::string bytes(numbers.size() * sizeof(Number), '\0');
  if (!numbers.empty()) std::memcpy(bytes.data(), numbers.data(), bytes.size());
  return bytes;
}

/** Vectors of equal length; the table has them as columns. */
struct Vectors {
  std::vector<std::vector<double>> columns;

  std::size_t count() const { return columns.size(); }
  std::size_t length() const { return columns.front().size(); }
  /** Vector after vector. */
  std::vector<double> byVector() const {
    std::vector<double> all;
    for (const auto& column : columns)
      all.insert(all.end(), column.begin(), column.end());
    return all;
  }
  /** Row after row. */
  std::vector<double> byRow() const {
    std::vector<double> all;
    for (std::size_t i = 0; i < length(); ++i)
      for (const auto& column : columns)
        all.push_back(column[i]);
    return all;
  }
};

inline std::string setFile(const Vectors& vectors) {
  return bytesOf<std::int32_t>({static_cast<std::int32_t>(vectors.count()),
                                static_cast<std::int32_t>(vectors.length())}) +
         bytesOf(vectors.byVector());
}

/** A .npy file of version 1 with this dictionary. */
inline std::string npyFile(std::string dictionary, const std::string& data) {
  while ((10 + dictionary.size() + 1) % 64 != 0)
    dictionary += ' ';
  dictionary += '\n';
  std::string bytes = "\x93NUMPY\x01";
  bytes.push_back('\0');
  bytes += bytesOf<std::uint16_t>({static_cast<std::uint16_t>(dictionary.size())});
  return bytes + dictionary + data;
}

inline std::string npyDictionary(bool columnOrder, std::size_t rows, std::size_t columns) {
  return "{'descr': '<f8', 'fortran_order': " + std::string(columnOrder ? "True" : "False") +
         ", 'shape': (" + std::to_string(rows) + ", " + std::to_string(columns) + "), }";
}

} // namespace apptest

#endif
