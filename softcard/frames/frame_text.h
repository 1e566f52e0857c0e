// SPDX-License-Identifier: Apache-2.0
//
// Frames as one line of text, for tests, scripts and messages.
//
//   eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 vlan=10 prio=3 ipv4 src=192.0.2.1
//       dst=198.51.100.9 ttl=64 udp sport=1000 dport=53 payload=0a0b
//
// A line is a row of headers from the outside in, each a word followed by its fields as key=value
// in any order. A field that is left out has the value given here; lengths, types and checksums
// that are left out are made to fit.
//
//   eth      src dst (both required), vlan prio=0 dei=0 tpid=0x8100 for a tag, and again for each
//            further tag, outermost first; type=<the following header's, else 0x88b5>
//   arp      op=request (or reply, or a number) sha=<eth src> spa=0.0.0.0 tha=00:00:00:00:00:00
//            tpa=0.0.0.0
//   ipv4     src dst (required) ttl=64 tos=0 id=0 df=0 mf=0 frag=0 (offset in bytes)
//            proto=<the following header's, else 253> options=<hex> length checksum
//   ipv6     src dst (required) hops=64 tc=0 flow=0 next=<the following header's, else 59> length
//   hopopts, dstopts, routing   next data=<hex> (what follows the two first bytes; made up to a
//            multiple of 8)
//   frag     next offset=0 (in bytes) more=0 id=0
//   tcp      sport dport (required) seq=0 ack=0 flags=A (letters of FSRPAUEC, or a number)
//   window=65535
//            options=<hex> checksum
//   udp      sport dport (required) length checksum
//   icmp     type code=0 id=0 seq=0 checksum
//   icmp6    the same
//   llc      dsap ssap control=3 length
//   snap     oui=0 proto length
//   payload=<hex>   behind the last header: its contents
//   trailer=<hex>   behind that: bytes that no header counts
//   size=<bytes>    at the end: zeros are added up to this size of the whole frame
//
// Numbers are decimal or, with 0x, hexadecimal. A line of hexadecimal digits alone (colons and
// blanks between bytes allowed) is the frame byte by byte.
#ifndef SOFTCARD_FRAMES_FRAME_TEXT_H_
#define SOFTCARD_FRAMES_FRAME_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace softcard {

// Makes the frame that `text` describes. False leaves `frame` as it was and puts into `error` what
// is wrong and at which column (from 1).
bool parse_frame(const std::string& text, std::vector<std::uint8_t>& frame, std::string& error);

// The frame as one line that parse_frame() turns into the same bytes.
std::string print_frame(const std::uint8_t* data, std::size_t bytes);

// Whether a frame shows what `pattern` asks for. A pattern is written like a frame, and each header
// and field in it must be there, in this order and with this value; what it leaves out may be
// anything. The word untagged in eth asks for a frame without a tag. A pattern of plain hexadecimal
// digits asks for exactly these bytes. False in `error` as above when the pattern is no pattern;
// else `error` is emptied.
bool frame_matches(const std::string& pattern, const std::uint8_t* data, std::size_t bytes,
                   std::string& error);

}  // namespace softcard

#endif  // SOFTCARD_FRAMES_FRAME_TEXT_H_
