// SPDX-License-Identifier: Apache-2.0
//
// Calls of the SDK through a connection to a card in another process: how many a second from one
// client and how long one takes, beside a bare echo of as many bytes over the same kind of socket;
// and how several clients at once share the card.
//
//   remote_calls [SECONDS]     for each measurement; 2 unless given
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <list>
#include <string>
#include <utility>
#include <vector>

#include "libxorp/eventloop.hh"
#include "remote/client.h"
#include "service/server.h"
#include "vorn_port_mapping.h"
#include "vorn_sdk.h"

namespace {

using Clock = std::chrono::steady_clock;
using vorn::remote::Descriptor;

// A call of get_port_pvid(): what it sends, and what it gets.
constexpr std::size_t kRequestBytes = 18;
constexpr std::size_t kAnswerBytes = 10;
constexpr unsigned kClients = 4;

std::pair<Descriptor, Descriptor> socket_pair() {
  int ends[2] = {-1, -1};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) std::abort();
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

// Runs `work` in a process of its own.
pid_t in_process(const std::function<void()>& work) {
  const pid_t child = fork();
  if (child != 0) return child;
  work();
  _exit(0);
}

void end(pid_t child) {
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
}

void echo(int socket) {
  char bytes[kRequestBytes];
  while (recv(socket, bytes, sizeof bytes, 0) == static_cast<ssize_t>(sizeof bytes) &&
         send(socket, bytes, kAnswerBytes, MSG_NOSIGNAL) == static_cast<ssize_t>(kAnswerBytes)) {
  }
}

void serve(std::vector<Descriptor> clients) {
  int ports = 0;
  if (!vorn_init_line_card(ports) || !vornsdk_create_sdk_instance()) return;
  EventLoop loop;
  vorn::service::Server server(loop, {});
  for (Descriptor& client : clients) server.adopt(std::move(client), false);
  for (;;) loop.run();
}

struct Times {
  double calls_per_second;
  double median_us;
  double p99_us;
};

// Does `call` again and again for so long.
Times measure(double seconds, const std::function<bool()>& call) {
  for (unsigned i = 0; i < 1000; ++i) call();
  std::vector<float> microseconds;
  microseconds.reserve(1 << 20);
  const Clock::time_point start = Clock::now();
  Clock::time_point before = start;
  while (std::chrono::duration<double>(before - start).count() < seconds) {
    if (!call()) std::abort();
    const Clock::time_point now = Clock::now();
    microseconds.push_back(std::chrono::duration<float, std::micro>(now - before).count());
    before = now;
  }
  const double calls = static_cast<double>(microseconds.size());
  std::sort(microseconds.begin(), microseconds.end());
  const auto at = [&](double part) {
    return microseconds[static_cast<std::size_t>(part * (calls - 1))];
  };
  return {calls / std::chrono::duration<double>(before - start).count(), at(0.5), at(0.99)};
}

Times measure_echo(double seconds) {
  auto [near, far] = socket_pair();
  const int socket = near.get();
  const pid_t child = in_process([&, &other = far] { echo(other.get()); });
  const Times times = measure(seconds, [socket] {
    char bytes[kRequestBytes] = {};
    return send(socket, bytes, sizeof bytes, MSG_NOSIGNAL) == static_cast<ssize_t>(sizeof bytes) &&
           recv(socket, bytes, kAnswerBytes, 0) == static_cast<ssize_t>(kAnswerBytes);
  });
  end(child);
  return times;
}

Times measure_calls(double seconds, Descriptor socket) {
  std::list<LagNode> lags;
  vorn::remote::Client client(lags);
  int ports = 0;
  if (!client.init_with(std::move(socket), ports) || !client.create_instance()) std::abort();
  // As an entry point does it.
  return measure(seconds, [&client] {
    Mp mp(0, 0);
    VornSdkBase* sdk = nullptr;
    unsigned pvid = 0;
    return client.usp_to_mp(Usp(1, 1, 3), mp) && client.get_instance(sdk) &&
           sdk->get_port_pvid(mp, pvid) && pvid == 1;
  });
}

void print(const char* what, const Times& times) {
  std::printf("%-8s %9.0f calls/s   median %6.1f us   99 %% below %6.1f us\n", what,
              times.calls_per_second, times.median_us, times.p99_us);
}

}  // namespace

int main(int argc, char** argv) {
  const double seconds = argc > 1 ? std::atof(argv[1]) : 2;
  const Times bare = measure_echo(seconds);
  print("echo", bare);

  auto [near, far] = socket_pair();
  std::vector<Descriptor> one;
  one.push_back(std::move(far));
  pid_t card = in_process([&one] { serve(std::move(one)); });
  one.clear();
  const Times calls = measure_calls(seconds, std::move(near));
  end(card);
  print("card", calls);
  std::printf("ratio    %.2f\n", calls.calls_per_second / bare.calls_per_second);

  std::vector<Descriptor> near_ends;
  std::vector<Descriptor> far_ends;
  for (unsigned i = 0; i < kClients; ++i) {
    auto ends = socket_pair();
    near_ends.push_back(std::move(ends.first));
    far_ends.push_back(std::move(ends.second));
  }
  card = in_process([&far_ends] { serve(std::move(far_ends)); });
  far_ends.clear();
  int results[2] = {-1, -1};
  if (pipe(results) != 0) return 1;
  for (Descriptor& socket : near_ends) {
    in_process([&] {
      const double rate = measure_calls(seconds, std::move(socket)).calls_per_second;
      if (write(results[1], &rate, sizeof rate) != sizeof rate) std::abort();
    });
  }
  std::vector<double> rates(kClients);
  for (double& rate : rates) {
    if (read(results[0], &rate, sizeof rate) != sizeof rate) return 1;
  }
  for (unsigned i = 0; i < kClients; ++i) wait(nullptr);
  end(card);
  const auto [least, most] = std::minmax_element(rates.begin(), rates.end());
  double all = 0;
  for (const double rate : rates) all += rate;
  std::printf("%u clients %7.0f calls/s   the slowest has %.2f of the quickest\n", kClients, all,
              *least / *most);
  return 0;
}
