// SPDX-License-Identifier: Apache-2.0
//
// The shell at a terminal, and behind a pipe in real time. What is typed is echoed, so the words to
// wait for are written with quotes in them that their answers lack.
#include <gtest/gtest.h>

#include <chrono>

#include "process.h"

namespace {

constexpr char kPrompt[] = "vornsh> ";
constexpr char kInterrupt[] = "\x03";
constexpr char kEndOfInput[] = "\x04";

bool has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

class Terminal : public testing::Test {
 protected:
  Terminal() : shell_(folder_, {}, Process::Ends::kTerminal) { shell_.until(kPrompt); }

  // Types a line and gives what comes up to `answer`.
  std::string type(const std::string& line, const std::string& answer) {
    shell_.send(line + '\n');
    return shell_.until(answer);
  }
  void quit() {
    shell_.send("quit\n");
    EXPECT_EQ(shell_.status(), 0);
  }

  Folder folder_;
  Process shell_;
};

TEST_F(Terminal, AnswersUntilItsInputEnds) {
  EXPECT_TRUE(has(type("vorn_get_port_pvid 1/1/3", "ok\r\n"), "pvid = 1\r\n"));
  shell_.until(kPrompt);
  // Mistakes are told without a place, lines go on in the next one, and neither ends the shell.
  EXPECT_TRUE(has(type("vorn_set_port_pvid 1/1/3", "PVID\r\n"), "\nvorn_set_port_pvid: pvid is"));
  type("echo a''b \\", kPrompt);
  type("c", "ab c\r\n");
  shell_.until(kPrompt);
  shell_.send(kEndOfInput);
  EXPECT_EQ(shell_.status(), 0);
}

TEST_F(Terminal, RunsWhatIsTypedAheadAfterwardsAndWhole) {
  type("echo o''n; wait 0.3; echo o''ver", "on\r\n");
  shell_.send("0\necho t''wo\necho th''r");
  EXPECT_FALSE(has(shell_.until("over\r\n"), "unknown"));
  shell_.until("0: unknown command");
  shell_.until("two\r\n");
  // A line that was begun can be finished.
  type("ee", "three\r\n");
  quit();
}

// The interrupt ends any command that runs, and all that was to follow in its line.
TEST_F(Terminal, InterruptEndsTheCommandThatRuns) {
  folder_.file("long.vorn", "echo reached\nwait 80000\necho beyond\n");
  folder_.file("long.rec", "link 1/1/0 down\nwait 80000\nlink 1/1/1 down\n");
  for (const char* command : {"wait 80000", "repeat 1000000000 show fdb", "repeat 2 wait 80000",
                              "source long.vorn", "repeat 9 source long.vorn", "replay long.rec"}) {
    type(std::string("echo beg''un; ") + command + "; echo bey''ond", "begun\r\n");
    shell_.send(kInterrupt);
    EXPECT_FALSE(has(shell_.until("interrupted\r\n"), "beyond")) << command;
    EXPECT_FALSE(has(type("echo st''ill", "still\r\n"), "beyond")) << command;
  }
  EXPECT_TRUE(has(type("show port 1/1/1; echo d''one", "done\r\n"), "up "));
  quit();
}

TEST_F(Terminal, InterruptGivesUpTheLineThatIsTyped) {
  shell_.send("echo forgot");
  shell_.until("forgot");
  shell_.send(kInterrupt);
  shell_.until(kPrompt);
  EXPECT_FALSE(has(type("echo k''ept", "kept\r\n"), "forgot"));
  shell_.until(kPrompt);
  // The first half of a line goes, too.
  type("echo ha''lf \\", kPrompt);
  shell_.send(kInterrupt);
  shell_.until(kPrompt);
  EXPECT_FALSE(has(type("echo wh''ole", "whole\r\n"), "half"));
  quit();
}

// A cable to another shell: its events come while a line is typed, and leave it as it is.
TEST_F(Terminal, EventsLeaveTheTypedLineAlone) {
  type("vorn_register_link_change_callback; cable 1/1/0 unix w; echo s''et", "set\r\n");
  shell_.until(kPrompt);
  shell_.send("echo ty''p");
  shell_.until("ty''p");
  Process peer(folder_, {"--real-time"});
  peer.send("cable 1/1/0 unix w\n");
  shell_.until("event link_change port 1/1/0 state up");
#if VORN_LINE_EDITING
  shell_.until("vornsh> echo ty''p");
#endif
  type("ed", "typed\r\n");
  quit();
}

#if VORN_LINE_EDITING

TEST_F(Terminal, KeepsItsHistory) {
  type("echo o''ne", "one\r\n");
  type("echo w''aits; wait 80000", "waits\r\n");
  shell_.send(kInterrupt);
  shell_.until("interrupted\r\n");
  quit();
  Process next(folder_, {}, Process::Ends::kTerminal);
  next.until(kPrompt);
  next.send("\x10\x10\x10\n");  // the line before, thrice
  next.until("one\r\n");
}

TEST_F(Terminal, CompletesWords) {
  const struct {
    const char* typed;
    const char* answer;
  } kRows[] = {
      {"vorn_get_port_pv\t1/1/0", "pvid = 1\r\n"},
      {"c.get_port_pv\t1/1/0", "pvid = 1\r\n"},
      {"! vorn_get_port_pv\t1/1/99", "failed: 1/1/99: the card has 52 ports\r\n"},
      {"repeat 2 vorn_get_port_pv\t1/1/0", "pvid = 1\r\n"},
      {"help entry_po\t", "the names of all entry points"},
      {"vorn_set_port_duplex 1/1/0 ha\t", "ok\r\n"},
      {"link 1/1/0 do\t; show port 1/1/0", "(pulled)\r\n"},
      {"vorn_set_port_autoneg 1/1/0 of\t", "ok\r\n"},
      // Nothing is offered behind the last argument, or where nothing begins so.
      {"vorn_set_port_autoneg 1/1/0 on of\t", "'of' is one argument too many"},
      {"link 1/1/0 side\t", "'side' is neither up nor down"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.typed);
    type(row.typed, row.answer);
    shell_.until(kPrompt);
  }
  quit();
}

TEST_F(Terminal, RunsThePastedLinesOneByOne) {
  type("\x1b[200~echo o''ne\necho t''wo; quit\necho t''hree\x1b[201~", "one\r\ntwo\r\n");
  EXPECT_FALSE(has(shell_.rest(), "\nthree"));
  EXPECT_EQ(shell_.status(), 0);
}

#endif

TEST(Pipe, CardLivesWhileItWaitsForInput) {
  const Folder folder;
  Process one(folder, {"--real-time", "--json"});
  one.send("vorn_register_link_change_callback\ncable 1/1/0 unix w\n");
  one.until("unix w\"");
  Process other(folder, {"--real-time", "--json"});
  other.send("cable 1/1/0 unix w\n");
  one.until("\"event\":\"link_change\",\"port\":\"1/1/0\",\"state\":\"up\"");
  // And it goes on being asked.
  one.send("vorn_get_port_pvid 1/1/0\nquit\n");
  one.until("{\"pvid\":1}");
  EXPECT_EQ(one.status(), 0);
}

TEST(Pipe, AnswersEachLineWhenItComes) {
  const Folder folder;
  for (const char* time : {"--real-time", "--virtual-time"}) {
    Process shell(folder, {"-v", time});
    shell.send("vorn_create_vlan 10\n");
    shell.until("> vorn_create_vlan 10 -> ok\n");
    const auto before = std::chrono::steady_clock::now();
    shell.send("wait 0.1; echo waited\n");
    shell.until("waited\n");
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(100));
    shell.send("vorn_get_port_pvid 1/1/0");  // no line end at the end
    shell.end_input();
    EXPECT_TRUE(has(shell.rest(), "pvid = 1\nok\n"));
    EXPECT_EQ(shell.status(), 0);
  }
}

}  // namespace
