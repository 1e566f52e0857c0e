// SPDX-License-Identifier: Apache-2.0
//
// XorpFd: a file descriptor as a value.

#ifndef LIBXORP_XORPFD_HH_
#define LIBXORP_XORPFD_HH_

#include "libxorp/xorp.h"

#define BAD_XORPFD (-1)

// Holds the number only: copies name the same descriptor and nothing ever closes it. Passed by
// value like an int.
class XorpFd {
 public:
  XorpFd() : _filedesc(BAD_XORPFD) {}
  XorpFd(int fd) : _filedesc(fd) {}  // NOLINT: an int is meant to convert

  operator int() const { return _filedesc; }
  int getSocket() const { return _filedesc; }

  // The number in decimal.
  std::string str() const { return std::to_string(_filedesc); }

  void clear() { _filedesc = BAD_XORPFD; }

  // False for -1 alone: any other negative number counts as valid.
  bool is_valid() const { return _filedesc != BAD_XORPFD; }

 private:
  int _filedesc;
};

#endif  // LIBXORP_XORPFD_HH_
