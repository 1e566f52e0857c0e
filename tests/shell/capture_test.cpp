// SPDX-License-Identifier: Apache-2.0
//
// Captures that somebody reads while they grow, and what programs of others see in them.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "../support/pcapng.h"
#include "process.h"

namespace {

const char kFlood[] = "inject 1/1/0 eth src=00:00:5e:00:53:01 dst=ff:ff:ff:ff:ff:ff\n";

std::string output_of(const std::string& command) {
  std::string output;
  FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return "cannot be run";
  char buffer[4096];
  for (std::size_t count; (count = fread(buffer, 1, sizeof buffer, pipe)) != 0;) {
    output.append(buffer, count);
  }
  pclose(pipe);
  return output;
}

// Folder with a card of three ports.
class LiveCapture : public testing::Test {
 protected:
  LiveCapture() { folder.file("three.card", "ports 3 speed 1000\n"); }
  Folder folder;
};

// Text and capture go different ways, whatever the script prints and wherever it comes from.
TEST_F(LiveCapture, HasStandardOutputForItself) {
  const std::string script = std::string("echo hello\nvorn_create_vlan 10\n  capture - 1/1/0\n") +
                             kFlood + "capture off\n" + "capture - 1/1/1\nshow vlan 1\n";
  folder.file("live.vorn", script);
  const auto expect_apart = [&](const std::vector<std::string>& arguments,
                                const std::string& input) {
    std::vector<std::string> all = {"--card", "three.card"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const std::string printed = run(folder, all, input, "exec >seen.pcapng");
    // The shell's exit status stands behind all that it printed.
    EXPECT_NE(printed.find("[0]"), std::string::npos) << printed;
    EXPECT_NE(printed.find("hello"), std::string::npos) << printed;
    const std::string seen = folder.contents("seen.pcapng");
    // Two captures are two sections.
    const std::size_t second = seen.rfind("\x0a\x0d\x0d\x0a");
    ASSERT_NE(second, 0u);
    EXPECT_EQ(pcapng_test::read(seen.substr(0, second)).text(),
              "1/1/0 in #1: to 1/1/1, 1/1/2, CPU | CPU: copy of a flood\n");
    EXPECT_EQ(pcapng_test::read(seen.substr(second)).interfaces[0].name, "1/1/1");
  };
  expect_apart({"live.vorn"}, "");
  expect_apart({"--json", "-v", "live.vorn"}, "");
  std::string commands = script;
  for (char& c : commands) c = c == '\n' ? ';' : c;
  expect_apart({"-c", commands}, "");
  expect_apart({}, script.substr(script.find("  capture")) + "echo hello\n");
  // Too late: text stands there already.
  const std::string late = run(folder, {"--card", "three.card"}, script);
  EXPECT_NE(late.find("stdin:3: capture: standard output has other text already"),
            std::string::npos)
      << late;
}

// A script that ends with it goes on until its reader has had enough.
TEST_F(LiveCapture, LastsAsLongAsItsReader) {
  ASSERT_EQ(mkfifo(folder.path("reader").c_str(), 0600), 0);
  Process waiting(folder, {"--card", "three.card", "-c", "capture -"}, Process::Ends::kPipes,
                  "exec >reader");
  const int reader = open(folder.path("reader").c_str(), O_RDONLY);
  std::string head;
  for (char byte = 0; head.find("control plane") == std::string::npos;) {
    ASSERT_EQ(read(reader, &byte, 1), 1) << "it has ended";
    head += byte;
  }
  close(reader);
  EXPECT_EQ(waiting.rest(), "-: 0 frames; the reader is gone\n");
  EXPECT_EQ(waiting.status(), 0);
  // Frames are there while it runs.
  Process shell(folder, {"--card", "three.card", "--real-time"}, Process::Ends::kPipes,
                "mkfifo pipe; cat pipe & exec 9>pipe");
  shell.send("capture pipe 1/1/1\n" + std::string(kFlood));
  shell.until("from 1/1/0");
  shell.send("capture\n");
  shell.until("pipe: 1 frames\n");
  shell.send("capture off\n");
  shell.until("pipe: 1 frames\n");
  shell.end_input();
  EXPECT_EQ(shell.status(), 0);
}

TEST_F(LiveCapture, FailsWithTheDisk) {
  EXPECT_EQ(run(folder, {"--card", "three.card"},
                "capture full.pcapng\nrepeat 20 " + std::string(kFlood) + "echo on\ncapture\n",
                "ulimit -f 1; trap '' XFSZ"),
            "stdin:2: full.pcapng: cannot be written any more: File too large\non\n[1]");
}

// tshark and capinfos know what the format is.
TEST_F(LiveCapture, ShowsOthersWhy) {
  if (output_of("command -v tshark && command -v capinfos").find("capinfos") == std::string::npos) {
    GTEST_SKIP() << "SKIPPED: tshark and capinfos are not installed; nobody else has looked at our "
                    "captures";
  }
  EXPECT_EQ(run(folder,
                {"--card", "three.card", "-c",
                 "capture seen.pcapng; time warp 1.000000007; vorn_create_lag lag/2;"
                 "vorn_add_ports_to_lag lag/2 1/1/1; " +
                     std::string(kFlood) + "; vorn_set_port_stp_state 1/1/0 blocking; " + kFlood}),
            "ok\nok\nok\n[0]");
  const std::string file = folder.path("seen.pcapng");
  EXPECT_EQ(output_of("tshark -r " + file +
                      " -T fields -e frame.time_epoch -e frame.interface_name"
                      " -e frame.packet_flags_direction -e frame.packet_id -e frame.comment"
                      " 2>&1 | grep -v 'Running as'"),
            "1.000000007\t1/1/0\t0x00000001\t1\tto lag/2, 1/1/2, CPU,CPU: copy of a flood\n"
            "1.000000007\t1/1/1\t0x00000002\t1\tfrom 1/1/0\n"
            "1.000000007\t1/1/2\t0x00000002\t1\tfrom 1/1/0\n"
            "1.000000007\tcpu\t0x00000002\t1\tfrom 1/1/0,copy of a flood\n"
            "1.000000007\t1/1/0\t0x00000001\t2\tdropped: stp-ingress\n");
  // The verdict of the last one, in hexadecimal.
  EXPECT_EQ(output_of("tshark -r " + file +
                      " -Y 'frame.packet_id == 2' -T fields -e frame.verdict.hw 2>/dev/null"
                      " | tr -d ' :' | xxd -r -p"),
            "dropped: stp-ingress");
  const std::string told = output_of("capinfos " + file + " 2>&1");
  for (const char* const part :
       {"Number of packets:   5", "nanoseconds (9)", "Number of interfaces in file: 4",
        "Name = 1/1/2", "Name = cpu", "Capture application: the software line card"}) {
    EXPECT_NE(told.find(part), std::string::npos) << part << " is missing in:\n" << told;
  }
}

}  // namespace
