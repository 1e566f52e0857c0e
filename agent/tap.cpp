// SPDX-License-Identifier: Apache-2.0
#include "tap.h"

#include <fcntl.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

// Younger than some of the kernel headers that this compiles with.
#ifndef IFF_NO_CARRIER
#define IFF_NO_CARRIER 0x0040
#endif

namespace agent {

std::unique_ptr<Tap> Tap::open(const std::string& name, std::string& error) {
  const auto fail = [&](const char* what) {
    error = name + ": " + what + ": " + std::strerror(errno);
    return nullptr;
  };
  if (name.size() >= IFNAMSIZ) {
    errno = ENAMETOOLONG;
    return fail("interface");
  }
  const int descriptor = ::open("/dev/net/tun", O_RDWR | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return fail("/dev/net/tun");
  std::unique_ptr<Tap> tap(new Tap(descriptor, 0));
  ifreq request{};
  name.copy(request.ifr_name, IFNAMSIZ - 1);
  // The kernel's flags are 16 bits, of which the highest is in use.
  request.ifr_flags = static_cast<short>(IFF_TAP | IFF_NO_PI | IFF_NO_CARRIER | IFF_TUN_EXCL);
  if (ioctl(descriptor, TUNSETIFF, &request) != 0) return fail("making the interface");
  tap->index_ = static_cast<int>(if_nametoindex(request.ifr_name));
  if (tap->index_ == 0) return fail("finding the interface");
  // Known to be off, where it would be unknown.
  tap->set_carrier(false);
  return tap;
}

Tap::~Tap() { close(descriptor_); }

void Tap::set_carrier(bool on) {
  int value = on ? 1 : 0;
  if (ioctl(descriptor_, TUNSETCARRIER, &value) == 0) carrier_ = on;
}

std::ptrdiff_t Tap::read(std::uint8_t* bytes) const {
  const ssize_t count = ::read(descriptor_, bytes, kMostBytes);
  if (count >= 0) return count;
  return errno == EAGAIN || errno == EINTR ? 0 : -1;
}

bool Tap::write(const std::uint8_t* bytes, std::size_t count) const {
  return ::write(descriptor_, bytes, count) == static_cast<ssize_t>(count);
}

}  // namespace agent
