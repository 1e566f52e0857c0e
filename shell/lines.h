// SPDX-License-Identifier: Apache-2.0
//
// Files of commands: their lines as they are wanted, and which file is which.
#ifndef SHELL_LINES_H_
#define SHELL_LINES_H_

#include <sys/types.h>

#include <iosfwd>
#include <optional>
#include <string>

namespace shell {

class Lines {
 public:
  // `name` is what messages call the input, which outlives this.
  Lines(std::istream& input, std::string name) : input_(input), name_(std::move(name)) {}

  // The next line without its end, which is LF or CR LF. False at the end of the input; Error when
  // it cannot be read, and when its first line shows that it is not plain UTF-8.
  bool next(std::string& line);

  // Of the line that came last, from 1.
  unsigned number() const { return number_; }

 private:
  std::istream& input_;
  std::string name_;
  unsigned number_ = 0;
};

// A regular file, whatever it is called.
struct FileId {
  dev_t device;
  ino_t inode;
  bool operator==(const FileId& other) const {
    return device == other.device && inode == other.inode;
  }
};

// Which file is at `path`; nothing when there is none, or none that keeps what is written to it.
std::optional<FileId> file_at(const std::string& path);

}  // namespace shell

#endif  // SHELL_LINES_H_
