// SPDX-License-Identifier: Apache-2.0
//
// A UDP socket and a line card on one event loop: each datagram is a frame of 60 bytes that enters
// port 1/1/0 of the card, and the program says which stations the card learns.
//
//   udp_beside_card          sends itself three datagrams and ends
//   udp_beside_card PORT     listens on that port until it is stopped
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "libxorp/eventloop.hh"
#include "softcard/cables/memory_cable.h"
#include "softcard/host.h"
#include "vornlcapi/api.h"
#include "vornlcapi/socket.h"

namespace {

constexpr unsigned kFrameBytes = 60;
// Two frames: a full buffer, and nothing cut, since every datagram has the same size.
constexpr unsigned kReadBytes = 2 * kFrameBytes;
constexpr int kStations = 3;
constexpr int kRoundMilliseconds = 10;

int stations = 0;

// The card delivers its events from here, between two callbacks of the loop.
void deliver() { softcard::host::card()->run_once(); }

// Ages addresses and takes frames out of cables that have no descriptor in the loop.
bool card_round() {
  deliver();
  return true;
}

struct Receiver {
  EventLoop& loop;
  VornSocket& socket;
  unsigned seen;      // bytes of the buffer in use that were handled
  XorpTask delivery;  // runs as long as somebody holds it
};

// Short datagrams share a buffer: what is new begins where the last call ended.
void datagram_came(const unsigned char* buffer, unsigned bytes, unsigned total, void* data) {
  Receiver& receiver = *static_cast<Receiver*>(data);
  const unsigned frame_bytes = total - receiver.seen;
  std::printf("datagram of %u bytes, %u of %u in the buffer\n", frame_bytes, total, bytes);
  softcard::Cable* const cable = softcard::host::card()->cable(0);
  dynamic_cast<softcard::MemoryCable&>(*cable).send(buffer + receiver.seen, frame_bytes);
  receiver.delivery = receiver.loop.new_oneoff_task(callback(deliver));
  receiver.seen = total;
  if (total == bytes) {
    // The buffer is full and the socket has stopped listening.
    receiver.seen = 0;
    receiver.socket.read(kReadBytes);
  }
}

void mac_changed(L2Addr* entry, int what, void*) {
  if (what != MAC_UPDATE_LEARNED) return;
  const unsigned char* const mac = entry->mac;
  std::printf("station %02x:%02x:%02x:%02x:%02x:%02x is at %u/%u/%u\n", mac[0], mac[1], mac[2],
              mac[3], mac[4], mac[5], entry->port.unit(), entry->port.slot(), entry->port.port());
  ++stations;
}

bool send_stations(unsigned short port) {
  const int sender = ::socket(AF_INET, SOCK_DGRAM, 0);
  sockaddr_in to{};
  to.sin_family = AF_INET;
  to.sin_port = htons(port);
  to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  bool sent = true;
  for (int station = 1; station <= kStations; ++station) {
    unsigned char frame[kFrameBytes] = {};
    std::memset(frame, 0xff, 6);  // to everybody
    frame[6] = 0x02;              // from an address of this program's own making
    frame[11] = static_cast<unsigned char>(station);
    frame[12] = 0x88;  // an EtherType for experiments
    frame[13] = 0xb5;
    sent = sendto(sender, frame, sizeof frame, 0, reinterpret_cast<sockaddr*>(&to), sizeof to) ==
               static_cast<ssize_t>(sizeof frame) &&
           sent;
  }
  close(sender);
  return sent;
}

int run(int wanted_port) {
  EventLoop loop;
  VornSocket socket(loop);  // goes before its loop
  unsigned short port = static_cast<unsigned short>(wanted_port);
  if (wanted_port == 0) {
    port = 50000;
    while (!socket.bind_address("", port)) ++port;
  } else if (!socket.bind_address("", port)) {
    std::perror("the port cannot be used");
    return EXIT_FAILURE;
  }
  Receiver receiver = {loop, socket, 0, XorpTask()};
  socket.register_io_callback(true, datagram_came, &receiver);
  if (!socket.read(kReadBytes)) return EXIT_FAILURE;

  if (wanted_port == 0 && !send_stations(port)) return EXIT_FAILURE;
  const XorpTimer rounds = loop.new_periodic_ms(kRoundMilliseconds, callback(card_round));
  while (wanted_port != 0 || stations < kStations) loop.run();
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  const int port = argc > 1 ? std::atoi(argv[1]) : 0;
  if (argc > 2 || port < 0 || port > 65535 || (argc == 2 && port == 0)) {
    std::fprintf(stderr, "usage: %s [PORT]\n", argv[0]);
    return EXIT_FAILURE;
  }
  int ports = 0;
  if (!vorn_lcmgr_api_init(ports) || !vorn_register_mac_update_callback(mac_changed, nullptr)) {
    std::fprintf(stderr, "no line card: %s\n", softcard::host::error().c_str());
    return EXIT_FAILURE;
  }
  const int status = run(port);
  return vorn_lcmgr_api_terminate() ? status : EXIT_FAILURE;
}
