// SPDX-License-Identifier: Apache-2.0
//
// A server on the recording host, in a thread of its own, and clients of it in the test's.
#ifndef TESTS_REMOTE_SERVER_THREAD_H_
#define TESTS_REMOTE_SERVER_THREAD_H_

#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <functional>
#include <future>
#include <list>
#include <thread>
#include <utility>

#include "libxorp/eventloop.hh"
#include "remote/client.h"
#include "remote/protocol.h"
#include "service/server.h"
#include "tests/support/recorder.h"

namespace vorn::test {

// The two ends of a connection.
inline std::pair<remote::Descriptor, remote::Descriptor> socket_pair() {
  int ends[2] = {-1, -1};
  EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  return {remote::Descriptor(ends[0]), remote::Descriptor(ends[1])};
}

// The recorder's world, while it lives.
struct FreshHost {
  FreshHost() { host().reset(); }
  ~FreshHost() { host().reset(); }
};

class ServerThread {
 public:
  explicit ServerThread(service::Options options = {}) {
    std::promise<void> started;
    thread_ = std::thread([this, &started, options = std::move(options)]() mutable {
      EventLoop loop;
      service::Server server(loop, std::move(options));
      server_ = &server;
      loop.add_ioevent_cb(wakeup_.get(), IOT_READ, callback(this, &ServerThread::woken));
      started.set_value();
      while (!ends_) loop.run();
    });
    started.get_future().wait();
  }
  ~ServerThread() {
    run([this](service::Server&) { ends_ = true; });
    thread_.join();
  }
  ServerThread(const ServerThread&) = delete;
  ServerThread& operator=(const ServerThread&) = delete;

  // Has the server's thread do something, between two rounds, and waits for it.
  void run(std::function<void(service::Server&)> work) {
    std::promise<void> done;
    work_ = [&](service::Server& server) {
      work(server);
      done.set_value();
    };
    eventfd_write(wakeup_.get(), 1);
    done.get_future().wait();
  }

  // The client's end of a connection.
  remote::Descriptor connect(bool read_only = false) {
    auto [near, far] = socket_pair();
    run([&, end = std::make_shared<remote::Descriptor>(std::move(far))](service::Server& server) {
      server.adopt(std::move(*end), read_only);
    });
    return std::move(near);
  }
  std::size_t clients() {
    std::size_t count = 0;
    run([&](service::Server& server) { count = server.clients(); });
    return count;
  }

 private:
  void woken(XorpFd, IoEventType) {
    eventfd_t count = 0;
    eventfd_read(wakeup_.get(), &count);
    std::exchange(work_, nullptr)(*server_);
  }

  remote::Descriptor wakeup_{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
  std::function<void(service::Server&)> work_;
  service::Server* server_ = nullptr;
  bool ends_ = false;
  std::thread thread_;
};

// A client with a LAG list of its own.
class TestClient {
 public:
  explicit TestClient(remote::Descriptor socket) {
    client.set_timeout_ms(10000);
    connected = client.init_with(std::move(socket), ports) && client.create_instance();
    client.get_instance(sdk);
  }

  std::list<LagNode> lags;
  remote::Client client{lags};
  int ports = 0;
  bool connected = false;
  VornSdkBase* sdk = nullptr;
};

// A client that writes its messages by itself.
class RawClient {
 public:
  explicit RawClient(remote::Descriptor socket) : socket_(std::move(socket)) {
    const timeval limit = {10, 0};
    setsockopt(socket_.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  }

  static remote::Bytes hello(std::uint32_t version = remote::kVersion,
                             std::uint64_t hash = remote::table_hash()) {
    return message(remote::Kind::kHello, [&](remote::Writer& out) {
      out.u32(remote::kMagic);
      out.u32(version);
      out.u64(hash);
    });
  }
  // create_vlan(vlan).
  static remote::Bytes call(unsigned vlan) {
    return message(remote::Kind::kCall, [&](remote::Writer& out) {
      out.u8(0);
      out.u32(vlan);
    });
  }
  template <class Write>
  static remote::Bytes message(remote::Kind kind, const Write& write) {
    remote::Bytes bytes;
    const std::size_t start = remote::begin_message(bytes, kind);
    remote::Writer out(bytes);
    write(out);
    remote::end_message(bytes, start);
    return bytes;
  }

  void send(const remote::Bytes& bytes, std::size_t count) {
    EXPECT_EQ(::send(socket_.get(), bytes.data(), count, MSG_NOSIGNAL),
              static_cast<ssize_t>(count));
  }
  void send(const remote::Bytes& bytes) { send(bytes, bytes.size()); }
  // Whether the other end is there to take it.
  bool sends(const remote::Bytes& bytes) {
    return ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) > 0;
  }
  // The next message, its header included; empty when the other end has gone.
  remote::Bytes receive() {
    remote::Bytes bytes = receive(4);
    if (bytes.size() < 4) return {};
    const remote::Bytes rest = receive(remote::Reader(bytes.data(), 4).u32());
    bytes.insert(bytes.end(), rest.begin(), rest.end());
    return bytes;
  }
  // Whether the other end goes.
  bool is_dropped() {
    std::uint8_t byte = 0;
    ssize_t count = 0;
    do {
      count = recv(socket_.get(), &byte, 1, 0);
    } while (count == 1);
    return count == 0 || errno == ECONNRESET;
  }
  // Messages that are there.
  unsigned take_all() {
    unsigned messages = 0;
    std::uint8_t header[4];
    while (recv(socket_.get(), header, 4, MSG_DONTWAIT) == 4) {
      receive(remote::Reader(header, 4).u32());
      ++messages;
    }
    return messages;
  }
  // Takes the bytes that are there.
  std::size_t drain() {
    std::vector<std::uint8_t> bytes(1 << 20);
    const ssize_t count = recv(socket_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    return count < 0 ? 0 : static_cast<std::size_t>(count);
  }
  void end() { socket_.reset(); }

 private:
  remote::Bytes receive(std::size_t count) {
    remote::Bytes bytes(count);
    const ssize_t got = recv(socket_.get(), bytes.data(), count, MSG_WAITALL);
    bytes.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
    return bytes;
  }

  remote::Descriptor socket_;
};

}  // namespace vorn::test

#endif  // TESTS_REMOTE_SERVER_THREAD_H_
