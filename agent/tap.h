// SPDX-License-Identifier: Apache-2.0
//
// A tap: the network interface that Linux has for a front-panel port. It lasts as long as this
// object, and no longer than the process.
#ifndef AGENT_TAP_H_
#define AGENT_TAP_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace agent {

class Tap {
 public:
  // Makes an interface that is down and has no carrier, in the network namespace of the caller.
  // Null, and the reason in `error`, when there is one of that name or the kernel refuses.
  static std::unique_ptr<Tap> open(const std::string& name, std::string& error);
  ~Tap();
  Tap(const Tap&) = delete;
  Tap& operator=(const Tap&) = delete;

  int descriptor() const { return descriptor_; }
  // The kernel's number of the interface.
  int index() const { return index_; }

  bool carrier() const { return carrier_; }
  void set_carrier(bool on);

  // What Linux sends out of the interface: the bytes of one frame, 0 when none waits, and less when
  // the interface is gone.
  static constexpr std::size_t kMostBytes = 66000;
  std::ptrdiff_t read(std::uint8_t* bytes) const;
  // Has Linux receive a frame from the interface. False when it does not.
  bool write(const std::uint8_t* bytes, std::size_t count) const;

 private:
  Tap(int descriptor, int index) : descriptor_(descriptor), index_(index) {}

  int descriptor_;
  int index_;
  bool carrier_ = false;
};

}  // namespace agent

#endif  // AGENT_TAP_H_
