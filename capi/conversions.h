// SPDX-License-Identifier: Apache-2.0
//
// How arguments cross between C and C++, and the one shape of a C getter. Arguments go in by
// to_...() and come out by an output, which fetch() stores on success:
//
//   int ctype_vorn_get_port_pvid(usp_s* port, unsigned int* pvid) {
//     return fetch<vorn_get_port_pvid>(to_usp(port), out(pvid));
//   }
//
// Nothing here catches exceptions: temporaries are released on the way out.
#ifndef CAPI_CONVERSIONS_H_
#define CAPI_CONVERSIONS_H_

#include <cstring>
#include <list>

#include "vornlcapi/types.h"

namespace vorn::detail {

// ---- Arguments in -------------------------------------------------------------------------------

// Only the low 8 bits of a C caller's flag count, however wide its prototype made it.
inline bool to_flag(int flag) { return static_cast<unsigned char>(flag) != 0; }

inline Usp to_usp(const usp_s* port) { return Usp(port->unit, port->slot, port->port); }

// Keeps order and duplicates. REQUIRES: count is not negative.
std::list<Usp> to_list(const usp_s* ports, int count);

// A copy of a byte array in a local of its size.
template <int kSize>
class Bytes {
 public:
  explicit Bytes(const unsigned char* from) { std::memcpy(bytes_, from, kSize); }
  operator const unsigned char*() const { return bytes_; }

 private:
  unsigned char bytes_[kSize];
};
using MacBytes = Bytes<6>;
using Ip6Bytes = Bytes<16>;

// The alignment gap behind ether_type is not read.
of_flow_s to_flow(const ctype_of_flow_s* flow);

of_flow_qualify_udf_s to_udf(const ctype_of_flow_qualify_udf_s* udf);

inline of_action_t to_action(ctype_of_action_t kind) { return static_cast<of_action_t>(kind); }

inline of_action_param_s to_action_param(const ctype_of_action_param_s& param) {
  of_action_param_s copy;
  static_assert(sizeof(copy) == sizeof(param), "the parameter is copied byte for byte");
  std::memcpy(&copy, &param, sizeof(copy));
  return copy;
}

// REQUIRES: packet->length is not 0.
Packet to_packet(const ctype_packet_s* packet);

inline void store(const Usp& from, usp_s* to) {
  to->unit = from.unit();
  to->slot = from.slot();
  to->port = from.port();
}

// ---- Outputs ------------------------------------------------------------------------------------
// An output is a local that the C++ entry point writes, and the caller's memory that store()
// copies it to.

template <typename T>
class Out {
 public:
  explicit Out(T* to) : to_(to), value_() {}
  operator T&() { return value_; }
  void store() const { *to_ = value_; }

 private:
  T* to_;
  T value_;
};

class OutUsp {
 public:
  explicit OutUsp(usp_s* to) : to_(to), port_(0, 0, 0) {}
  operator Usp&() { return port_; }
  void store() const { detail::store(port_, to_); }

 private:
  usp_s* to_;
  Usp port_;
};

class OutMac {
 public:
  using Array = unsigned char[6];
  explicit OutMac(unsigned char* to) : to_(to), mac_() {}
  operator Array&() { return mac_; }
  void store() const { std::memcpy(to_, mac_, sizeof(mac_)); }

 private:
  unsigned char* to_;
  Array mac_;
};

template <typename T>
Out<T> out(T* to) {
  return Out<T>(to);
}
inline OutUsp out(usp_s* to) { return OutUsp(to); }
inline OutMac out_mac(unsigned char* to) { return OutMac(to); }

template <typename T>
void store_output(const Out<T>& output) {
  output.store();
}
inline void store_output(const OutUsp& output) { output.store(); }
inline void store_output(const OutMac& output) { output.store(); }
template <typename T>
void store_output(const T&) {}  // not an output

// The getter: calls Entry, and on success stores the outputs in the order of the arguments.
template <auto Entry, typename... Args>
int fetch(Args&&... args) {
  const bool ok = Entry(args...);
  if (ok) (store_output(args), ...);
  return ok;
}

}  // namespace vorn::detail

#endif  // CAPI_CONVERSIONS_H_
