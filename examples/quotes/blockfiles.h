/// Keeps the bytes of blocks in files.
#ifndef WQDATA_EXAMPLES_QUOTES_BLOCKFILES_H_
#define WQDATA_EXAMPLES_QUOTES_BLOCKFILES_H_

#include <filesystem>
#include <vector>

#include <wqdata/blocks/datablock.h>

/// A directory for the files of one run.
class BlockDirectory {
 public:
  /// A new directory where the system has its temporary files. It is removed with all that is in
  /// it at the end of this object. Throws std::runtime_error if it can't be made.
  BlockDirectory();

  /// The directory `path`, made if there is none. It stays, and so do the files. Throws
  /// std::runtime_error if it can't be made.
  explicit BlockDirectory(std::filesystem::path path);

  ~BlockDirectory();
  BlockDirectory(const BlockDirectory&) = delete;
  BlockDirectory& operator=(const BlockDirectory&) = delete;

  const std::filesystem::path& Path() const { return m_path; }

 private:
  std::filesystem::path m_path;
  bool m_temporary;
};

/// Writes the bytes of `block`, and nothing else, to the file `path`, in place of what it held.
/// Throws std::runtime_error if it can't.
void WriteBlock(const std::filesystem::path& path, wqd::CDataBlock& block);

/// The bytes of the file `path`. Throws std::runtime_error if it can't be read.
std::vector<char> ReadBytes(const std::filesystem::path& path);

#endif  // WQDATA_EXAMPLES_QUOTES_BLOCKFILES_H_
