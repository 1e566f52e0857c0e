// SPDX-License-Identifier: Apache-2.0
//
// vornd and its clients as processes, some of which are killed.

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <thread>

#include "remote/client.h"
#include "remote/protocol.h"
#include "tests/shell/process.h"

namespace vorn::test {
namespace {

using remote::Client;

// vornd on a socket in a folder of its own.
class Vornd {
 public:
  explicit Vornd(const Folder& folder, const std::vector<std::string>& arguments = {},
                 const std::string& set_up = ":")
      : process(folder, with_listen(arguments), Process::Ends::kPipes, set_up) {}

  bool is_ready() {
    return process.until("is served at").find("is served at") != std::string::npos;
  }

  Process process;

 private:
  static std::vector<std::string> with_listen(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--listen", "card"});
    return arguments;
  }
};

// A client with a LAG list of its own.
struct Connected {
  explicit Connected(const std::string& path) {
    client.use(path);
    connect();
  }
  bool connect() {
    VornSdkBase* found = nullptr;
    const bool done = client.init(ports) && client.create_instance() && client.get_instance(found);
    sdk = found;
    return done;
  }
  // A call that changes nothing.
  bool call() {
    VornSdkBase* found = nullptr;
    unsigned pvid = 0;
    return client.get_instance(found) && found->get_port_pvid(Mp(1, 1), pvid);
  }

  std::list<LagNode> lags;
  Client client{lags};
  VornSdkBase* sdk = nullptr;
  int ports = 0;
};

std::multiset<unsigned> down;
void note_down(LinkStatus* status, Usp* port) {
  if (status->state == PHY_STATE_DOWN) down.insert(port->port());
}

class VorndTest : public testing::Test {
 protected:
  std::string path() const { return folder_.path("card"); }

  Folder folder_;
};

TEST_F(VorndTest, RunsItsScriptServesAndEndsCleanly) {
  for (const int signal : {SIGTERM, SIGINT}) {
    const std::string other = folder_.path("cable");
    Vornd vornd(folder_, {"--readonly-socket", "reader",
                          folder_.file("script",
                                       "vorn_create_vlan 10\n"
                                       "cable 1/1/0 unix " +
                                           other + "\n")});
    ASSERT_TRUE(vornd.is_ready());
    Connected client(path());
    ASSERT_NE(client.sdk, nullptr) << client.client.last_refusal();
    EXPECT_EQ(client.ports, 52);
    EXPECT_FALSE(client.sdk->create_vlan(10));
    EXPECT_EQ(client.client.last_refusal(), "create_vlan: VLAN 10 exists");
    EXPECT_TRUE(client.sdk->create_vlan(11));

    Connected reader(folder_.path("reader"));
    std::list<Mp> tagged;
    std::list<Mp> untagged;
    EXPECT_TRUE(reader.sdk->get_vlan_info(11, tagged, untagged));
    EXPECT_FALSE(reader.sdk->delete_vlan(11));
    EXPECT_EQ(reader.client.last_refusal(), "the connection is read-only");

    EXPECT_EQ(access(other.c_str(), F_OK), 0);
    vornd.process.signal(signal);
    EXPECT_EQ(vornd.process.status(), 0);
    for (const std::string& file : {path(), folder_.path("reader"), other}) {
      EXPECT_NE(access(file.c_str(), F_OK), 0) << file;
    }
    EXPECT_FALSE(client.call());
  }
}

TEST_F(VorndTest, SaysWhyItDoesNotStart) {
  const auto said = [this](const std::vector<std::string>& arguments) {
    Vornd vornd(folder_, arguments);
    std::string output = vornd.process.rest();
    return output + "[" + std::to_string(vornd.process.status()) + "]";
  };
  folder_.file("script", "vorn_create_vlan 10\nvorn_create_vlan 5000\n");
  EXPECT_EQ(said({"script"}),
            "ok\nfailed: VLAN 5000: above 4094\nscript:2: vorn_create_vlan: failed\n"
            "vornd: script: it did not run to its end\n[1]");
  EXPECT_EQ(said({"--card", "nowhere"}), "vornd: nowhere: cannot be opened\n[2]");
  EXPECT_EQ(said({"--group", "no such group"}), "vornd: there is no group 'no such group'\n[2]");
  Vornd first(folder_);
  ASSERT_TRUE(first.is_ready());
  EXPECT_EQ(said({}), "vornd: card: somebody serves it already\n[2]");
  Connected client(path());
  EXPECT_TRUE(client.call());
}

// Killed after so many calls, and in the middle of one.
TEST_F(VorndTest, ThatIsKilledIsNoticedAndReachedAgain) {
  for (unsigned calls = 0; calls < 6; ++calls) {
    Vornd vornd(folder_);
    ASSERT_TRUE(vornd.is_ready());
    Connected client(path());
    ASSERT_NE(client.sdk, nullptr) << client.client.last_refusal();
    EXPECT_TRUE(client.sdk->register_link_change_callback(&note_down, nullptr));
    for (unsigned call = 0; call < calls; ++call) EXPECT_TRUE(client.call());
    if (calls % 2 == 0) {
      vornd.process.signal(SIGKILL);
      EXPECT_EQ(vornd.process.status(), 128 + SIGKILL);
    } else {
      std::thread([&vornd] { vornd.process.signal(SIGKILL); }).detach();
      while (client.call()) {
      }
    }
    EXPECT_FALSE(client.call());
    EXPECT_NE(client.client.last_refusal().find("is lost"), std::string::npos);
    down.clear();
    client.client.dispatch();
    EXPECT_EQ(down.size(), 52u);
    EXPECT_EQ(std::set<unsigned>(down.begin(), down.end()).size(), 52u);

    // Its socket is still there, and is taken over.
    EXPECT_EQ(access(path().c_str(), F_OK), 0);
    EXPECT_EQ(vornd.process.status(), 128 + SIGKILL);
    Vornd next(folder_);
    ASSERT_TRUE(next.is_ready());
    EXPECT_TRUE(client.connect()) << client.client.last_refusal();
    EXPECT_TRUE(client.call());
  }
}

TEST_F(VorndTest, OutlivesItsClients) {
  Vornd vornd(folder_);
  ASSERT_TRUE(vornd.is_ready());
  Connected client(path());
  for (unsigned calls = 0; calls < 8; ++calls) {
    int ready[2] = {-1, -1};
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
      Connected other(path());
      bool good =
          other.sdk != nullptr && other.sdk->register_link_change_callback(&note_down, nullptr);
      for (unsigned call = 0; good; ++call) {
        if (call == calls) good = write(ready[1], "!", 1) == 1;
        good = good && other.call();
      }
      _exit(1);
    }
    char byte = 0;
    EXPECT_EQ(read(ready[0], &byte, 1), 1);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(ready[0]);
    close(ready[1]);
    EXPECT_TRUE(client.call());
  }
  vornd.process.signal(SIGTERM);
  EXPECT_EQ(vornd.process.status(), 0);
}

// At rest it is in poll(2), without a limit of time.
TEST_F(VorndTest, UsesNoProcessorTimeAtRest) {
#if defined(__x86_64__)
  Vornd vornd(folder_, {folder_.file("script", "cable 1/1/0 patch 1/1/1\n")});
  ASSERT_TRUE(vornd.is_ready());
  Connected client(path());
  EXPECT_TRUE(client.call());
  const std::string file = "/proc/" + std::to_string(vornd.process.pid()) + "/syscall";
  std::string line;
  for (;;) {
    std::ifstream in(file);
    if (!std::getline(in, line)) GTEST_SKIP() << file << " cannot be read here";
    std::istringstream words(line);
    std::string number;
    std::string limit;
    words >> number >> limit >> limit >> limit;
    if (number == "7" && limit == "0xffffffff") break;
    ASSERT_TRUE(client.call());  // it does something else yet
  }
#else
  GTEST_SKIP() << "the system call is looked up on x86-64 alone";
#endif
}

TEST_F(VorndTest, TellsTheServiceManagerAndTheJournal) {
  if (!VORN_SYSTEMD) GTEST_SKIP() << "built without libsystemd";
  const remote::Descriptor manager(socket(AF_UNIX, SOCK_DGRAM, 0));
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  folder_.path("manager").copy(name.sun_path, sizeof name.sun_path - 1);
  ASSERT_EQ(bind(manager.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name), 0);
  const auto told = [&manager] {
    pollfd waiting = {manager.get(), POLLIN, 0};
    EXPECT_EQ(poll(&waiting, 1, 60000), 1);
    char text[256] = {};
    EXPECT_GT(recv(manager.get(), text, sizeof text - 1, 0), 0);
    return std::string(text);
  };
  Vornd vornd(folder_, {},
              "export NOTIFY_SOCKET=" + folder_.path("manager") +
                  " JOURNAL_STREAM=$(stat -L -c %d:%i /proc/self/fd/2)");
  EXPECT_EQ(told(), "READY=1\nSTATUS=serving 52 ports at card");
  EXPECT_EQ(vornd.process.until("served"), "<6>a card of 52 ports is served");
  vornd.process.signal(SIGTERM);
  EXPECT_EQ(told(), "STOPPING=1");
  EXPECT_EQ(vornd.process.status(), 0);
}

}  // namespace
}  // namespace vorn::test
