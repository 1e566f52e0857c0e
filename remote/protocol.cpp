// SPDX-License-Identifier: Apache-2.0

#include "remote/protocol.h"

#include "remote/calls.h"

namespace vorn::remote {
namespace {

using operations::kOperation;

// FNV-1a.
class Hash {
 public:
  void add(std::string_view words) {
    for (const char c : words) add_byte(static_cast<unsigned char>(c));
    add_byte(0);
  }
  std::uint64_t value() const { return value_; }

 private:
  void add_byte(unsigned char byte) { value_ = (value_ ^ byte) * 0x100000001b3; }
  std::uint64_t value_ = 0xcbf29ce484222325;
};

}  // namespace

std::uint64_t table_hash() {
  static const std::uint64_t kHash = [] {
    Hash hash;
    operations::for_each_operation([&](auto slot) {
      constexpr auto& operation = kOperation<slot()>;
      hash.add(std::to_string(slot()));
      hash.add(operation.name);
      if constexpr (operation.effect != operations::Effect::kCallsBack) {
        constexpr auto function = operation.kFunction;
        hash.add(code_of<slot()>(function, parameter_numbers(function)));
      }
    });
    return hash.value();
  }();
  return kHash;
}

std::string version_text(std::uint32_t version, std::uint64_t hash) {
  std::string digits;
  for (unsigned shift = 64; shift != 0;) {
    shift -= 4;
    digits += "0123456789abcdef"[hash >> shift & 15];
  }
  return "version " + std::to_string(version) + ", table " + digits;
}

}  // namespace vorn::remote
