#include "support/Files.h"

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace support {

namespace fs = std::filesystem;

TempDirectory::TempDirectory() {
  std::string name = (fs::temp_directory_path() / "zarel-test-XXXXXX").string();
  if (!mkdtemp(name.data())) throw std::runtime_error("no temporary directory");
  _path = name;
}

TempDirectory::~TempDirectory() {
  std::error_code ignored;
  fs::remove_all(_path, ignored);
}

WorkingDirectory::WorkingDirectory(const std::string& path) : _former(fs::current_path()) {
  fs::current_path(path);
}

WorkingDirectory::~WorkingDirectory() {
  std::error_code ignored;
  fs::current_path(_former, ignored);
}

Environment::Environment(const char* name, const char* value) : _name(name), _was(false) {
  if (const char* former = std::getenv(name)) {
    _former = former;
    _was = true;
  }
  value ? setenv(name, value, 1) : unsetenv(name);
}

Environment::~Environment() {
  _was ? setenv(_name.c_str(), _former.c_str(), 1) : unsetenv(_name.c_str());
}

std::string bytesOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream all;
  if (!in) throw std::runtime_error("cannot read " + path);
  if (in.peek() != std::ifstream::traits_type::eof()) all << in.rdbuf();
  return all.str();
}

void writeBytes(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << bytes;
  out.close();
  if (!out) throw std::runtime_error("cannot write " + path);
}

void truncateTo(const std::string& path, size_t bytes) {
  fs::resize_file(path, bytes);
}

void flipByte(const std::string& path, size_t position, unsigned char mask) {
  std::string bytes = bytesOf(path);
  bytes.at(position) = static_cast<char>(bytes[position] ^ mask);
  writeBytes(path, bytes);
}

std::string hex(const std::string& digits) {
  std::string clean, bytes;
  for (const char c : digits)
    if (std::isxdigit(static_cast<unsigned char>(c))) clean.push_back(c);
  for (size_t k = 0; k + 1 < clean.size(); k += 2)
    bytes.push_back(static_cast<char>(std::stoi(clean.substr(k, 2), nullptr, 16)));
  return bytes;
}

} // namespace support
