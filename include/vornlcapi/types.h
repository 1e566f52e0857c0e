// SPDX-License-Identifier: Apache-2.0
//
// The value classes of the C++ interface, valid from C++11 on. They are shared with the host
// process: field order and widths are part of the interface between it and the library.
//
// All are plain values: copyable, no invariants, no virtual functions. records.h has the C
// records, and says what the bytes and numbers mean.
#ifndef VORNLCAPI_TYPES_H_
#define VORNLCAPI_TYPES_H_

#include <cstddef>
#include <list>
#include <type_traits>
#include <vector>

#include "vornlcapi/enums.h"
#include "vornlcapi/records.h"

// ---- Addresses ----------------------------------------------------------------------------------

// A logical port as callers name it: unit, slot, port. The host's port mapping decides whether
// it is a physical port, a LAG interface or a VLAN interface. It does not convert to Mp.
class Usp {
 public:
  Usp(unsigned unit, unsigned slot, unsigned port) : unit_(unit), slot_(slot), port_(port) {}

  unsigned unit() const { return unit_; }
  unsigned slot() const { return slot_; }
  unsigned port() const { return port_; }
  unsigned port() { return port_; }

  void set_unit(unsigned unit) { unit_ = unit; }
  void set_slot(unsigned slot) { slot_ = slot; }
  void set_port(unsigned port) { port_ = port; }

 private:
  unsigned unit_;
  unsigned slot_;
  unsigned port_;
};

// A hardware port as the SDK names it: module (chip) and port. With an operation's trunk flag
// set, module is 0 and port carries a LAG number.
class Mp {
 public:
  Mp(unsigned module, unsigned port) : module_(module), port_(port) {}

  unsigned module() const { return module_; }
  unsigned port() const { return port_; }

  void set_port(unsigned port) { port_ = port; }

 private:
  unsigned module_;
  unsigned port_;
};

inline bool operator==(const Usp& a, const Usp& b) {
  return a.unit() == b.unit() && a.slot() == b.slot() && a.port() == b.port();
}
inline bool operator!=(const Usp& a, const Usp& b) { return !(a == b); }
inline bool operator==(const Mp& a, const Mp& b) {
  return a.module() == b.module() && a.port() == b.port();
}
inline bool operator!=(const Mp& a, const Mp& b) { return !(a == b); }

// One LAG in the host's LAG list: its id and its member ports in the order they were added.
class LagNode {
 public:
  explicit LagNode(unsigned id) : id_(id), members_() {}

  unsigned id() const { return id_; }
  std::list<Mp>& members() { return members_; }
  const std::list<Mp>& members() const { return members_; }

 private:
  unsigned id_;
  std::list<Mp> members_;
};

// ---- Packets ------------------------------------------------------------------------------------

// A frame to send from the CPU.
class Packet {
 public:
  Packet() : length_(0), type_(0), data_() {}

  // Takes a copy of the whole frame: from its destination address on, without checksum.
  void set_data(const std::vector<unsigned char>& data) {
    data_.assign(data.begin(), data.end());
    length_ = static_cast<unsigned>(data_.size());
  }
  // PACKET_TYPE_..., handed to the SDK unchanged.
  void set_type(unsigned type) { type_ = type; }

  unsigned length() const { return length_; }  // bytes in data()
  unsigned type() const { return type_; }
  const std::vector<unsigned char>& data() const { return data_; }

 private:
  unsigned length_;
  unsigned type_;
  std::vector<unsigned char> data_;
};

// ---- Flow table ---------------------------------------------------------------------------------

// The 48 bytes of match fields of a flow. ctype_of_flow_s describes each field.
struct of_match_s {
  unsigned char src_mac[6];
  unsigned char dst_mac[6];
  unsigned short vlan_id;
  unsigned short vlan_priority;
  unsigned short ether_type;
  unsigned short gap_;  // alignment; means nothing
  unsigned int src_ip;
  unsigned int dst_ip;
  unsigned int src_ip_mask;
  unsigned int dst_ip_mask;
  unsigned short src_l4_port;
  unsigned short dst_l4_port;
  unsigned short ip_protocol;
  unsigned short tos;
  unsigned int flags;  // OF_MATCH_... bits; OF_MATCH_IN_PORT says whether in_port counts
};

// A flow as the caller gives it. A new one has in_port 0/0/0 and undefined match fields: fill
// all fields whose bit is set in match.flags, and match.flags itself.
struct of_flow_s {
  of_flow_s() : in_port(0, 0, 0) {}  // NOLINT: the match block stays as it is

  Usp in_port;
  of_match_s match;
};

// The same flow as the SDK takes it, with a hardware ingress port.
struct of_flow_mp_s {
  of_flow_mp_s() : in_port(0, 0) {}  // NOLINT: the match block stays as it is

  Mp in_port;
  of_match_s match;
};

// A user-defined qualifier of a flow; ctype_of_flow_qualify_udf_s describes its words.
struct of_flow_qualify_udf_s {
  unsigned int base;
  unsigned int offset;
  unsigned int value;
  unsigned int mask;
};

// The parameter of a flow action; ctype_of_action_param_s describes its words.
struct of_action_param_s {
  unsigned int word[3];
};

// ---- Counters -----------------------------------------------------------------------------------

struct StatCounter32 {
  stat_type_t type;
  unsigned int value;
};

struct StatCounter64 {
  stat_type_t type;
  alignas(8) unsigned long long value;
};

struct BriefStatCounter32 {
  brief_stat_type_t type;
  unsigned int value;
};

struct BriefStatCounter64 {
  brief_stat_type_t type;
  alignas(8) unsigned long long value;
};

// ---- Callbacks ----------------------------------------------------------------------------------
// These belong to the SDK and are valid during the call only. The fields are those of
// ctype_rx_packet_s, ctype_link_status_s and ctype_l2_addr_s.

struct RxPacket {
  unsigned int length;
  unsigned int reason;
  Usp port;
  unsigned int vlan;
  unsigned int priority;
  const unsigned char* data;
};

struct LinkStatus {
  phy_state_t state;
  speed_type_t speed;
  duplex_type_t duplex;
};

struct L2Addr {
  unsigned char mac[6];
  unsigned int vlan;
  Usp port;
  unsigned int flags;
};

// ---- Layouts that host and library share --------------------------------------------------------

static_assert(sizeof(Usp) == 12 && sizeof(Usp) == sizeof(usp_s), "Usp is three 32-bit words");
static_assert(sizeof(Mp) == 8, "Mp is two 32-bit words");
static_assert(std::is_trivially_copyable<Usp>::value && std::is_standard_layout<Usp>::value &&
                  std::is_trivially_copyable<Mp>::value && std::is_standard_layout<Mp>::value,
              "addresses are copied as plain words");
static_assert(sizeof(of_match_s) == 48 && offsetof(of_match_s, flags) == 44,
              "the match block is 48 bytes and ends with its flags");
static_assert(sizeof(of_flow_s) == 60 && offsetof(of_flow_s, match) == 12 &&
                  sizeof(of_flow_s) == sizeof(ctype_of_flow_s),
              "a flow is its ingress port and the match block");
static_assert(sizeof(of_flow_mp_s) == 56 && offsetof(of_flow_mp_s, match) == 8,
              "a hardware flow is its ingress port and the match block");
static_assert(sizeof(StatCounter32) == 8 && sizeof(BriefStatCounter32) == 8,
              "32-bit counters are two words");
static_assert(sizeof(StatCounter64) == 16 && offsetof(StatCounter64, value) == 8 &&
                  sizeof(BriefStatCounter64) == 16 && offsetof(BriefStatCounter64, value) == 8,
              "64-bit counters are four words with the value aligned to 8 bytes");
static_assert(sizeof(of_flow_qualify_udf_s) == 16 && sizeof(of_action_param_s) == 12,
              "qualifier and action parameter are plain words");
static_assert(sizeof(stp_state_t) == 4 && sizeof(ctype_of_action_t) == 4, "4-byte enumerations");

#endif  // VORNLCAPI_TYPES_H_
