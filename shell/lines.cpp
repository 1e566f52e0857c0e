// SPDX-License-Identifier: Apache-2.0
#include "lines.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <istream>

#include "text.h"

namespace shell {

namespace {

// The byte-order mark that editors of other systems put in front of a text.
const char* byte_order_mark(const std::string& line) {
  if (line.compare(0, 3, "\xef\xbb\xbf") == 0) return "a UTF-8";
  if (line.compare(0, 2, "\xff\xfe") == 0 || line.compare(0, 2, "\xfe\xff") == 0) return "a UTF-16";
  return nullptr;
}

}  // namespace

bool Lines::next(std::string& line) {
  errno = 0;
  if (!std::getline(input_, line)) {
    if (input_.bad()) throw Error("cannot read " + name_ + ": " + std::strerror(errno));
    return false;
  }
  if (++number_ == 1) {
    if (const char* const mark = byte_order_mark(line)) {
      throw Error(name_ + ":1: begins with " + mark +
                  " byte-order mark; save it as plain UTF-8 without one");
    }
  }
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return true;
}

std::optional<FileId> file_at(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return FileId{status.st_dev, status.st_ino};
}

}  // namespace shell
