// SPDX-License-Identifier: Apache-2.0

#include "softcard/base/hash.h"

#include <random>

namespace softcard {

KeyedHash KeyedHash::drawn() {
  std::random_device system;
  const std::uint64_t upper = system();
  return KeyedHash(upper << 32 | system());
}

}  // namespace softcard
