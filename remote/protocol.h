// SPDX-License-Identifier: Apache-2.0
//
// The messages between a client process and the process that has the card. docs/service.md
// describes them.
//
// A message is a count of 32 bits, of the bytes that follow, then its kind and what that kind
// holds. The client asks and waits for the answer, one request at a time; events come in between.
// The first request is `hello`: what it and its answer begin with never changes.
#ifndef REMOTE_PROTOCOL_H_
#define REMOTE_PROTOCOL_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "remote/wire.h"

namespace vorn::remote {

inline constexpr std::uint32_t kMagic = 0x564f524e;  // "VORN"
// Counts the changes of what is in this file and in who reads it.
inline constexpr std::uint32_t kVersion = 1;

inline constexpr std::size_t kHeaderBytes = 5;             // count and kind
inline constexpr std::size_t kMostMessageBytes = 1 << 20;  // of what the count counts

enum class Kind : std::uint8_t {
  // Requests.
  kHello = 1,      // magic, version, hash of the table
  kCall = 2,       // slot, arguments
  kPort = 3,       // Usp: what port it is
  kHardware = 4,   // Mp: the port that it is
  kMembers = 5,    // Usp: the hardware ports behind it
  kLags = 6,       // the LAG list
  kLagId = 7,      // Usp: the id of the LAG
  kLagUsp = 8,     // id: the LAG interface
  kLagChange = 9,  // LagChange, id, Usp, ports
  kListen = 10,    // kind of event, on or off
  kWalk = 11,      // the MAC table
  kCommand = 12,   // a command of the card's process: words

  // Answers: status, reason unless it is done, and what was asked for.
  kAnswer = 128,
  kPart = 129,  // of an answer that goes on

  // Events, while the client listens.
  kPacket = 140,
  kLink = 141,
  kMac = 142,
  kLost = 143,  // how many events of each kind were lost so far
};

enum class Status : std::uint8_t {
  kRefused = 0,
  kDone = 1,
  kNoMemory = 2,  // std::bad_alloc
  kThrew = 3,     // any other exception; the reason is its text
  kNotTried = 4,  // refused before the card was asked: nothing follows
};

// What a client does to the LAG list, and to the mapping of LAG interfaces and ids.
enum class LagChange : std::uint8_t {
  kAddToList = 0,
  kDeleteFromList = 1,
  kAddMembers = 2,
  kDeleteMembers = 3,
  kAddMapping = 4,
  kDeleteMapping = 5,
};

// Begins a message at the end of `bytes`; end_message() sets its count.
inline std::size_t begin_message(Bytes& bytes, Kind kind) {
  const std::size_t start = bytes.size();
  bytes.resize(start + kHeaderBytes);  // the count is known at the end
  bytes[start + 4] = static_cast<std::uint8_t>(kind);
  return start;
}
inline void end_message(Bytes& bytes, std::size_t start) {
  const std::size_t count = bytes.size() - start - 4;
  for (unsigned i = 0; i < 4; ++i) {
    bytes[start + i] = static_cast<std::uint8_t>(count >> (8 * (3 - i)));
  }
}

// A hash of the names and types of all operations: equal in two builds that carry them alike.
std::uint64_t table_hash();

// "version 1, table 0123456789abcdef".
std::string version_text(std::uint32_t version, std::uint64_t hash);

}  // namespace vorn::remote

#endif  // REMOTE_PROTOCOL_H_
