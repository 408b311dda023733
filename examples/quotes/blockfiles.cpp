#include "blockfiles.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

fs::path MakeTemporary() {
  std::string name = (fs::temp_directory_path() / "quotes-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make " + name);
  return name;
}

}  // namespace

BlockDirectory::BlockDirectory() : m_path(MakeTemporary()), m_temporary(true) {}

BlockDirectory::BlockDirectory(fs::path path) : m_path(std::move(path)), m_temporary(false) {
  std::error_code error;
  fs::create_directories(m_path, error);
  if (!fs::is_directory(m_path, error)) throw std::runtime_error("cannot make " + m_path.string());
}

BlockDirectory::~BlockDirectory() {
  std::error_code ignored;
  if (m_temporary) fs::remove_all(m_path, ignored);
}

void WriteBlock(const fs::path& path, wqd::CDataBlock& block) {
  std::ofstream file(path, std::ios::binary);
  file.write(static_cast<const char*>(block.GetData()), block.GetDataSize());
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

std::vector<char> ReadBytes(const fs::path& path) {
  std::vector<char> bytes(fs::file_size(path));
  std::ifstream file(path, std::ios::binary);
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return bytes;
}
