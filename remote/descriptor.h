// SPDX-License-Identifier: Apache-2.0
//
// A file descriptor with one owner.
#ifndef REMOTE_DESCRIPTOR_H_
#define REMOTE_DESCRIPTOR_H_

#include <unistd.h>

#include <utility>

namespace vorn::remote {

// Closes its descriptor; -1 for none.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~Descriptor() { reset(); }

  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  void reset() {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
  }

 private:
  int fd_ = -1;
};

}  // namespace vorn::remote

#endif  // REMOTE_DESCRIPTOR_H_
