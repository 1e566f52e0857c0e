// SPDX-License-Identifier: Apache-2.0
//
// The shell on input and output that are not as they should be.
#include <gtest/gtest.h>

#include <fstream>

#include "process.h"

namespace {

// `count` times the same.
std::string times(std::size_t count, const std::string& text) {
  std::string all;
  for (std::size_t i = 0; i < count; ++i) all += text;
  return all;
}

void expect_in(const std::string& output, const std::string& part) {
  EXPECT_NE(output.find(part), std::string::npos) << "'" << part << "' is missing in:\n" << output;
}

// An emulator's own files take the place of descriptors that are closed.
bool can_be(const std::string& set_up) {
  return !VORN_EMULATED || set_up.find("&-") == std::string::npos;
}

TEST(Script, IsReadAsItsBytesAre) {
  const struct {
    const char* symptom;
    std::string input;
    std::string output;  // all of it, and the exit status
  } kRows[] = {
      {"lines of other systems", "echo a \\\r\nb\r\necho \"c d\"\r\n", "a b\nc d\n[0]"},
      {"carriage returns elsewhere", "echo a\rb\n", "a b\n[0]"},
      {"a dollar that names no output", "echo $ a\n", "$ a\n[0]"},
      {"a backslash between single quotes", "echo 'a\\b'\n", "a\\b\n[0]"},
      {"numbers behind continued lines", "echo a \\\n b \\\n c\nx y \\\n\nno \\\n",
       "a b c\nstdin:4: x: unknown command; try help\n"
       "stdin:6: no: unknown command; try help\n[1]"},
      {"a NUL", std::string("echo a\0b\necho c\n", 16),
       "stdin:1: column 7 is a NUL, which no command has\nc\n[1]"},
      {"a mark in front",
       "\xef\xbb\xbf"
       "echo a\n",
       "vornsh: stdin:1: begins with a UTF-8 byte-order mark; save it as plain UTF-8 without "
       "one\n[2]"},
      {"two bytes a character",
       std::string("\xff\xfe"
                   "e\0c\0",
                   6),
       "vornsh: stdin:1: begins with a UTF-16 byte-order mark; save it as plain UTF-8 without "
       "one\n[2]"},
      {"nothing", "", "[0]"},
      {"no more than the end", "\n\n", "[0]"},
  };
  const Folder folder;
  for (const auto& row : kRows) EXPECT_EQ(run(folder, {}, row.input), row.output) << row.symptom;
  EXPECT_EQ(run(folder, {"--json", "-c", "echo 'a\\b'"}),
            "{\"file\":\"-c\",\"line\":1,\"command\":\"echo \\\"a\\\\\\\\b\\\"\",\"ok\":true,"
            "\"text\":\"a\\\\b\"}\n[0]");
  EXPECT_EQ(run(folder, {"-e"}, "echo a; expect ok; echo b\necho c\n"),
            "a\nstdin:1: expect: the last call is no call of an entry point\n[1]");
}

TEST(Script, AnswersForOneCommandAndNoOther) {
  const struct {
    const char* symptom;
    const char* input;
    const char* output;
  } kRows[] = {
      {"nine digits of a second", "time warp 0.012345678\ntime\n", "0.012345678 s\n[0]"},
      {"a value that begins as expected",
       "vorn_set_port_pvid 1/1/0 10\nvorn_get_port_pvid 1/1/0\nexpect pvid = 1\n",
       "ok\npvid = 10\nok\nstdin:3: expect: expected pvid = 1, came 10\n[1]"},
      {"more than expected",
       "repeat 2 inject 1/1/1 eth src=00:00:5e:00:53:01 dst=ff:ff:ff:ff:ff:ff\n"
       "expect 1/1/2 count 1\nexpect none\n",
       "stdin:2: expect: 1/1/2: expected 1 frames, 2 came\n"
       "stdin:3: expect: 1/1/0: expected no frame, came eth src=00:00:5e:00:53:01 "
       "dst=ff:ff:ff:ff:ff:ff\n[1]"},
      {"a cable to itself, and one to no file", "cable 1/1/0 patch 1/1/0\ncable 1/1/1 pcap - -\n",
       "stdin:1: cable: port: a cable has two ends\n[1]"},
      {"the next call, if no other is named", "fail create_vlan\nvorn_create_vlan 10\n",
       "failed: create_vlan: refused on purpose\nstdin:2: vorn_create_vlan: failed\n[1]"},
      {"up to the first failure", "fail create_vlan\nrepeat 2 vorn_create_vlan 10\n",
       "failed: create_vlan: refused on purpose\nstdin:2: repeat: failed\n[1]"},
      {"an address of the switch",
       "vorn_register_mac_update_callback\nvorn_add_system_mac 00:00:5e:00:53:01 1\n",
       "ok\nok\nevent mac_update update learned mac 00:00:5e:00:53:01 vlan 1 port cpu static "
       "off\n[0]"},
      {"one VLAN of two", "vorn_create_vlan 10\nshow vlan 10\n",
       "ok\nvlan  instance  tagged  untagged\n10    0         -       -\n[0]"},
  };
  const Folder folder;
  for (const auto& row : kRows) EXPECT_EQ(run(folder, {}, row.input), row.output) << row.symptom;
  EXPECT_FALSE(std::ifstream(folder.path("-")).good()) << "no file has that name";
}

// Frames that nobody expects are kept up to a bound, and losses are told.
TEST(Script, KeepsTheLatestThatNobodyExpected) {
  const Folder folder;
  folder.file("two.card", "ports 2 speed 1000\n");
  const auto inject = [&](const char* frames, const char* before, const char* behind) {
    return run(folder, {"--card", "two.card"},
               std::string("vorn_set_ports_mtu 1/1/0-1 9216\n") + before + "repeat " + frames +
                   " inject 1/1/0 eth src=00:00:5e:00:53:01 dst=ff:ff:ff:ff:ff:ff size=9000\n" +
                   behind);
  };
  EXPECT_EQ(inject("1800", "", "expect cpu count 1800\n"), "ok\n[0]");
  const std::string packets = inject("2000", "", "expect cpu none\ndrain\nexpect cpu none\n");
  expect_in(packets,
            " that came earlier are forgotten, for nobody asked and there was no room\n"
            "stdin:3: expect: cpu: expected no frame, 1");
  EXPECT_EQ(packets.find("forgotten"), packets.rfind("forgotten"));
  expect_in(inject("500", "vorn_register_rx_packet_callback\n", "expect event rx_packet\n"),
            " that came earlier are forgotten");
  // Each new patch takes the link down and brings it up at both ends; events of one command wait
  // for its end.
  const std::string links =
      run(folder, {},
          "vorn_register_link_change_callback\n"
          "repeat 1100 cable 1/1/0 patch 1/1/1\nshow drops\nshow drops 1/1/0\n");
  expect_in(links,
            "events  link-change  302     link changes that later ones took the place of\n"
            "port  reason  frames  because\n[0]");
}

// Nothing takes all memory, all time, or the stack.
TEST(Script, IsBounded) {
  const struct {
    const char* symptom;
    std::string input;
    const char* output;
  } kRows[] = {
      {"nested repeat", times(20000, "repeat 1 ") + "echo a\n", "more than 16 deep\n[1]"},
      {"nested expect", times(20000, "expect failed ") + "echo a\n", "more than 16 deep\n[1]"},
      {"sixteen are no problem", times(15, "repeat 1 ") + "echo reached\n", "reached\n[0]"},
      {"seventeen are one", times(16, "repeat 1 ") + "echo reached\n", "more than 16 deep\n[1]"},
      {"the last port of all", "vorn_set_ports_pvid 1/1/4294967290-4294967295 1\n", "failed\n[1]"},
      {"a long range", "vorn_set_ports_pvid 1/1/0-4294967295 1\n",
       "'4294967295' is not a number from 0 to 4096; usage: vorn_set_ports_pvid PORTS PVID\n[1]"},
      {"many ranges", "vorn_set_ports_pvid " + times(17, "1/1/0-4096,") + "1/1/0 1\n",
       "ports: more than 65536 ports; usage: vorn_set_ports_pvid PORTS PVID\n[1]"},
      {"a word of 1 MB", std::string(1000000, 'v') + "\n", "v: unknown command; try help\n[1]"},
      {"a word of 1 MB to explain", "help " + std::string(1000000, 'v') + "\n",
       "v' is neither a command nor a group\n[1]"},
  };
  const Folder folder;
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.symptom);
    expect_in(run(folder, {}, row.input), row.output);
  }
}

TEST(Files, ThatCannotBeReadOrWrittenAreErrors) {
  const Folder folder;
  const std::string directory = folder.path("");
  const struct {
    std::vector<std::string> arguments;
    std::string set_up;
    std::string output;
  } kRows[] = {
      {{directory}, ":", "vornsh: cannot read " + directory + ": Is a directory\n[2]"},
      {{}, "exec <" + directory, "vornsh: cannot read stdin: Is a directory\n[2]"},
      {{"--real-time"}, "exec <" + directory, "vornsh: cannot read stdin: Is a directory\n[2]"},
      {{}, "exec <&-", "vornsh: cannot read stdin: Bad file descriptor\n[2]"},
      {{"nowhere"}, ":", "vornsh: cannot read nowhere: No such file or directory\n[2]"},
      {{"-c", "source " + directory},
       ":",
       "-c:1: source: cannot read " + directory + ": Is a directory\n[1]"},
      {{"-c", "replay " + directory},
       ":",
       "-c:1: replay: cannot read " + directory + ": Is a directory\n[1]"},
      {{"-c", "record " + directory},
       ":",
       "-c:1: record: cannot write " + directory + ": Is a directory\n[1]"},
      {{"-c", "help"}, "exec >/dev/full", "vornsh: standard output cannot be written\n[1]"},
      {{"-h"}, "exec >/dev/full", "vornsh: standard output cannot be written\n[1]"},
      {{"-c", "help"}, "exec >&-", "vornsh: standard output cannot be written\n[1]"},
      // It ends with its output: nobody would learn of the rest.
      {{"-c", "help\nnonsense"}, "exec >&-", "vornsh: standard output cannot be written\n[1]"},
      {{"-c", "nonsense"}, "exec 2>&-", "[1]"},
      {{"-c", "nonsense"}, "exec 2>/dev/full", "[1]"},
      // The call's own answer stays.
      {{"-c", "record /dev/full; vorn_get_port_pvid 1/1/0; vorn_get_port_pvid 1/1/1"},
       ":",
       "pvid = 1\nok\n-c:1: the recording ends here, for it cannot be written: No space left on "
       "device\npvid = 1\nok\n[1]"},
      {{"--json", "-c", "record /dev/full; link 1/1/0 down"},
       ":",
       "{\"file\":\"-c\",\"line\":1,\"command\":\"record /dev/full\",\"ok\":true}\n"
       "{\"file\":\"-c\",\"line\":1,\"command\":\"link 1/1/0 down\",\"ok\":true}\n"
       "{\"file\":\"-c\",\"line\":1,\"ok\":false,\"error\":\"the recording ends here, for it "
       "cannot be written: No space left on device\"}\n[1]"},
  };
  for (const auto& row : kRows) {
    if (!can_be(row.set_up)) continue;
    EXPECT_EQ(run(folder, row.arguments, "", row.set_up), row.output) << row.set_up;
  }
}

// With any of the standard descriptors closed, a capture holds nothing but its frames.
TEST(Files, CapturesAreNotMixedWithText) {
  const std::string commands =
      "cable 1/1/1 pcap - out.pcap\n"
      "inject 1/1/0 eth src=00:00:5e:00:53:01 dst=ff:ff:ff:ff:ff:ff\n"
      "nonsense\n";
  const Folder folder;
  const std::string output = run(folder, {"-v", "-c", commands});
  const std::string sound = folder.contents("out.pcap");
  ASSERT_EQ(sound.size(), 24U + 16 + 14) << output;
  for (const char* set_up : {"exec <&-", "exec 2>&-", "exec <&- 2>&-"}) {
    if (!can_be(set_up)) continue;
    folder.file("out.pcap", "");
    expect_in(run(folder, {"-c", commands}, "", set_up), "[1]");
    EXPECT_EQ(folder.contents("out.pcap"), sound) << set_up;
  }
  if (!can_be("exec >&- 2>&-")) return;
  expect_in(run(folder, {"-c", "cable 1/1/1 pcap - out.pcap; help"}, "", "exec >&- 2>&-"), "[1]");
  EXPECT_EQ(folder.contents("out.pcap"), sound.substr(0, 24));
}

// 512 bytes are room for the head of a capture and 16 such frames.
TEST(Files, CaptureThatIsCutOffIsTold) {
  const Folder folder;
  const std::string capture =
      "cable 1/1/1 pcap - out.pcap\n"
      "repeat 17 inject 1/1/0 eth src=00:00:5e:00:53:01 dst=ff:ff:ff:ff:ff:ff\n"
      "link 1/1/0 up\n"
      "cable 1/1/1 none\n";
  const std::string limit = "trap '' XFSZ; ulimit -f 1";
  EXPECT_EQ(run(folder, {"-c", capture}, "", limit),
            "-c:2: 1/1/1: out.pcap: cannot be written after record 17: File too large\n[1]");
  EXPECT_EQ(folder.contents("out.pcap").size(), 512U);
  // In JSON, and in a recording that unplugs it: once for each.
  folder.file("session.rec", capture);
  const std::string json = run(folder, {"--json", "-c", "replay session.rec; echo on"}, "", limit);
  expect_in(json, "\"ok\":false,\"error\":\"1/1/1: out.pcap: cannot be written after record");
  EXPECT_EQ(json.find("cannot be written"), json.rfind("cannot be written"));
  expect_in(json, "[1]");
}

// A file grows or goes while it is read when it is written at the same time.
TEST(Files, ThatRunAreNotRecordedInto) {
  const Folder folder;
  const std::string self = "echo once\nrecord ./self.vorn\n";
  folder.file("self.vorn", self);
  const std::string told = ":2: record: ./self.vorn is running, and would be lost\n";
  EXPECT_EQ(run(folder, {"self.vorn"}), "once\nself.vorn" + told + "[1]");
  EXPECT_EQ(run(folder, {"-c", "source self.vorn"}), "once\nself.vorn" + told + "[1]");
  EXPECT_EQ(folder.contents("self.vorn"), self);
  expect_in(run(folder, {"-c", "replay self.vorn"}), "./self.vorn is running, and would be lost");
  EXPECT_EQ(folder.contents("self.vorn"), self);
  for (const char* command : {"replay", "source"}) {
    EXPECT_EQ(run(folder, {"-c", std::string("record x.rec; link 1/1/0 down; ") + command +
                                     " ./x.rec; record off; " + command + " x.rec"}),
              std::string("-c:1: ") + command +
                  ": ./x.rec is being recorded, and would grow while it runs\n" +
                  (command == std::string("replay") ? "1 commands, 0 differences\n[1]" : "[1]"));
  }
  // A recording that replays itself.
  folder.file("loop.rec", "replay loop.rec\n");
  expect_in(run(folder, {"-c", "replay loop.rec"}), "1 differences\n[1]");
}

TEST(Sharing, LetsAnotherShellWorkOnTheCard) {
  const Folder folder;
  Process sharing(folder, {"--listen", "card", "--real-time"});
  sharing.send("vorn_create_vlan 10\n");
  expect_in(sharing.until("ok\n"), "ok");
  expect_in(run(folder, {"--connect", "card", "-c", "vorn_create_vlan 11; vorn_create_vlan 10"}),
            "VLAN 10 exists");
  // The LAG list of another process follows.
  Process other(folder, {"--connect", "card"});
  other.send("vorn_get_lag_balancing_strategy lag/1\n");
  expect_in(other.until("does not exist\n"), "failed: lag/1");
  sharing.send("vorn_create_lag lag/1\nvorn_add_ports_to_lag lag/1 1/1/2,1/1/3\n");
  sharing.until("ok\n");
  sharing.until("ok\n");
  other.send("vorn_delete_ports_from_lag lag/1 1/1/3\nshow lag\n");
  expect_in(other.until("1/1/2\n"), "ok");
  sharing.send("vorn_delete_vlan 11\nvorn_lcmgr_api_terminate\n");
  expect_in(sharing.until("ok\n"), "ok");
  expect_in(sharing.until("ok\n"), "ok");
  sharing.send("quit\n");
  EXPECT_EQ(sharing.status(), 0);
  expect_in(run(folder, {"--connect", "card", "-c", "show vlan"}),
            "vornsh: card: No such file or directory");
}

TEST(Json, IsValidWhateverTheBytes) {
  const struct {
    const char* bytes;
    const char* json;
  } kRows[] = {
      {"a\tb\x01\x1f\x7f", "a b\\u0001\\u001f\x7f"},
      {"\\\"\\\\.", "\\\"\\\\."},
      {"\xc3\xa4 \xe2\x82\xac \xf0\x9f\x98\x80", "\xc3\xa4 \xe2\x82\xac \xf0\x9f\x98\x80"},
      {"\xff"
       "a\x80",
       "\\ufffda\\ufffd"},
      {"\xc3"
       "a",
       "\\ufffda"},                                            // cut short
      {"\xe2\x82", "\\ufffd\\ufffd"},                          // at the end
      {"\xf0\x9f\x98", "\\ufffd\\ufffd\\ufffd"},               //
      {"\xc0\x80 \xc1\xbf", "\\ufffd\\ufffd \\ufffd\\ufffd"},  // longer than need be
      {"\xe0\x9f\xbf \xe0\xa0\x80", "\\ufffd\\ufffd\\ufffd \xe0\xa0\x80"},
      {"\xf0\x8f\xbf\xbf \xf0\x90\x80\x80", "\\ufffd\\ufffd\\ufffd\\ufffd \xf0\x90\x80\x80"},
      {"\xed\xa0\x80 \xed\x9f\xbf", "\\ufffd\\ufffd\\ufffd \xed\x9f\xbf"},  // a surrogate
      {"\xf4\x90\x80\x80 \xf4\x8f\xbf\xbf",
       "\\ufffd\\ufffd\\ufffd\\ufffd \xf4\x8f\xbf\xbf"},  // beyond the last character
      {"\xee\x80\x80 \xf1\x80\x80\x80", "\xee\x80\x80 \xf1\x80\x80\x80"},
      {"\xf5\x80\x80\x80", "\\ufffd\\ufffd\\ufffd\\ufffd"},
  };
  const Folder folder;
  std::string script;
  std::string expected;
  for (const auto& row : kRows) script += std::string("echo ") + row.bytes + '\n';
  const std::string output = run(folder, {"--json"}, script);
  for (const auto& row : kRows) expect_in(output, std::string("\"text\":\"") + row.json + "\"}\n");
}

}  // namespace
