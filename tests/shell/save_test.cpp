// SPDX-License-Identifier: Apache-2.0
//
// A saved configuration leads a fresh card to where the other one was: for any configuration that
// calls can make, and whatever the disk does.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>

#include "process.h"

namespace {

const char kCard[] = "ports 6 speed 1000\nports 2 speed 10000\n";
constexpr int kPorts = 8;

// Makes lines of calls, most of which succeed.
class Calls {
 public:
  explicit Calls(unsigned seed) : random_(seed) {}

  std::string line() { return rows_[number(rows_.size())](); }

  // A frame into a port, from and to addresses that the calls use.
  std::string frame() {
    std::string text = "inject " + port() + " eth src=" + mac() + " dst=" + mac();
    if (number(3) == 0) text += " vlan=" + vlan();
    if (number(2) == 0) return text;
    text += " ipv4 src=" + ip() + " dst=" + ip();
    return text + (number(2) == 0 ? " udp sport=1 dport=" + word(4) : "");
  }

 private:
  std::size_t number(std::size_t below) { return random_() % below; }
  std::string word(std::size_t below) { return std::to_string(number(below)); }
  std::string port() { return "1/1/" + word(kPorts); }
  std::string lag() { return "lag/" + std::to_string(1 + number(5)); }
  std::string place() { return number(4) == 0 ? lag() : port(); }
  std::string ports() { return number(2) == 0 ? port() : port() + ',' + port(); }
  std::string some_ports() { return number(3) == 0 ? "-" : ports(); }
  std::string flag() { return number(2) == 0 ? "on" : "off"; }
  std::string vlan() {
    static const char* const kVlans[] = {"1", "2", "10", "20", "4094"};
    return kVlans[number(5)];
  }
  std::string mac() {
    return (number(12) == 0 ? "01:00:5e:00:53:0" : "00:00:5e:00:53:0") + word(6);
  }
  std::string ip() { return "192.0.2." + word(4); }
  std::string ip6() { return "2001:db8::" + word(4); }
  std::string subnet() { return "192.0." + word(4) + ".0"; }
  std::string id() { return word(7); }
  std::string hop() { return mac() + ' ' + id(); }
  std::string match() {
    static const char* const kFields[] = {
        "src_ip=192.0.2.0/24", "dst_ip=192.0.2.1", "dst_ip=192.0.2.1/255.0.255.0",
        "ether_type=0x800",    "ip_protocol=17",   "tos=4",
        "src_l4_port=1",       "dst_l4_port=2",    "vlan_priority=0"};
    switch (number(5)) {
      case 0:
        return "any";
      case 1:
        return "in_port=" + port();
      case 2:
        return "dst_mac=" + mac() + " src_mac=" + mac();
      case 3:
        return "vlan_id=" + vlan() + ' ' + kFields[number(std::size(kFields))];
      default:
        return kFields[number(std::size(kFields))];
    }
  }
  std::string action() {
    switch (number(9)) {
      case 0:
        return "output " + port();
      case 1:
        return std::string("output ") + (number(2) == 0 ? "controller" : "normal");
      case 2:
        return "set_vlan_id " + vlan();
      case 3:
        return "set_vlan_priority " + word(8);
      case 4:
        return number(2) == 0 ? "strip_vlan" : "set_queue " + word(8);
      case 5:
        return "set_src_mac " + mac();
      case 6:
        return "set_dst_ip " + ip();
      case 7:
        return "set_tos " + word(256);
      default:
        return "set_dst_l4_port " + word(65536);
    }
  }

  using Row = std::function<std::string()>;
  const std::vector<Row> rows_ = {
      [&] { return "vorn_set_port_speed " + port() + (number(2) == 0 ? " 100" : " 1000"); },
      [&] { return "vorn_set_port_duplex " + port() + (number(2) == 0 ? " half" : " full"); },
      [&] { return "vorn_set_port_autoneg " + port() + ' ' + flag(); },
      [&] { return "vorn_set_port_advertising_ability " + port() + ' ' + word(64); },
      [&] { return "vorn_set_port_flow_control_8023x " + port() + ' ' + flag() + ' ' + flag(); },
      [&] { return "vorn_set_port_jaming_control " + port() + ' ' + flag(); },
      [&] { return "vorn_set_port_mtu " + port() + ' ' + word(9217); },
      [&] { return "vorn_set_port_stat_enable " + port() + ' ' + flag(); },
      [&] { return "vorn_set_port_link_state " + port() + (number(2) == 0 ? " up" : " down"); },
      [&] { return "vorn_set_port_state " + port() + ' ' + flag(); },
      [&] { return "vorn_create_vlan " + vlan(); },
      [&] { return "vorn_create_vlan " + vlan(); },
      [&] { return "vorn_delete_vlan " + vlan(); },
      [&] { return "vorn_add_ports_to_vlan " + vlan() + ' ' + some_ports() + ' ' + some_ports(); },
      [&] { return "vorn_add_ports_to_vlan " + vlan() + ' ' + some_ports() + ' ' + some_ports(); },
      [&] { return "vorn_delete_ports_from_vlan " + vlan() + ' ' + ports(); },
      [&] { return "vorn_set_port_pvid " + place() + ' ' + vlan(); },
      [&] { return "vorn_set_port_vlan_accept_frame " + port() + ' ' + flag(); },
      [&] {
        return "vorn_set_port_vlan_priority " + port() + ' ' + (number(2) == 0 ? "0" : vlan()) +
               ' ' + word(8);
      },
      [&] {
        return "vorn_set_port_protocol_vlan " + port() + ' ' + word(3) + " 0x800" + word(8) + ' ' +
               vlan();
      },
      [&] { return "vorn_set_mac_vlan " + mac() + ' ' + vlan() + ' ' + word(8); },
      [&] {
        return "vorn_set_ipv4_subnet_vlan " + subnet() + " /" + word(33) + ' ' + vlan() + ' ' +
               word(8);
      },
      [&] {
        return "vorn_set_ipv6_subnet_vlan " + ip6() + ' ' + word(129) + ' ' + vlan() + ' ' +
               word(8);
      },
      [&] { return "vorn_create_lag " + lag(); },
      [&] { return "vorn_delete_lag " + lag(); },
      [&] { return "vorn_add_ports_to_lag " + lag() + ' ' + ports(); },
      [&] { return "vorn_add_ports_to_lag " + lag() + ' ' + ports(); },
      [&] { return "vorn_delete_ports_from_lag " + lag() + ' ' + ports(); },
      [&] { return "vorn_set_lag_balancing_strategy " + lag() + ' ' + word(9); },
      [&] { return "vorn_set_port_stp_state " + port() + ' ' + word(5); },
      [&] { return "vorn_set_port_mstp_state " + port() + ' ' + word(4) + ' ' + word(3); },
      [&] { return "vorn_set_port_bpdu_processing " + port() + ' ' + flag(); },
      [&] { return "vorn_set_port_unicast_control " + port() + ' ' + word(3); },
      [&] { return "vorn_set_port_multicast_control " + port() + ' ' + word(3); },
      [&] { return "vorn_set_port_broadcast_control " + port() + ' ' + word(3); },
      [&] { return "vorn_set_port_mirror " + port() + ' ' + port() + ' ' + word(4); },
      [&] { return "vorn_set_port_flood_blocking_cpu " + ports() + ' ' + word(8); },
      [&] { return "vorn_set_port_flood_blocking " + ports() + ' ' + port() + ' ' + word(8); },
      [&] { return "vorn_set_port_switch_unknown_unicast_to_cpu " + port() + ' ' + flag(); },
      [&] { return "vorn_set_switch_unknown_unicast_to_cpu " + flag(); },
      [&] { return "vorn_set_port_cos_mapping " + place() + ' ' + word(8) + ' ' + word(8); },
      [&] { return "vorn_set_port_ingress_discarding " + port() + ' ' + word(4); },
      [&] { return "vorn_set_port_egress_admin_state " + port() + ' ' + flag(); },
      [&] { return "vorn_set_port_l2_enable " + port() + ' ' + flag(); },
      [&] { return "vorn_set_switch_forward_mode " + word(3); },
      [&] { return "vorn_set_fdb_aging_time " + word(1000); },
      [&] { return "vorn_add_mac_to_port " + place() + ' ' + mac() + ' ' + vlan(); },
      [&] { return "vorn_add_system_mac " + mac() + ' ' + vlan(); },
      [&] { return "vorn_delete_mac_by_mac " + mac(); },
      [&] { return "vorn_set_port_mac_lock_ext " + port() + ' ' + flag() + ' ' + flag(); },
      [&] { return "vorn_set_port_mac_limit " + port() + ' ' + word(5); },
      [&] { return "vorn_set_system_mac_limit " + word(9); },
      [&] { return "vorn_create_l3_interface " + mac() + ' ' + vlan(); },
      [&] {
        return "vorn_create_l3_interface_with_id " + mac() + ' ' + vlan() + ' ' + id() + ' ' +
               flag();
      },
      [&] { return "vorn_delete_l3_interface_by_id " + id(); },
      [&] { return "vorn_add_l3_host_ip4 " + place() + ' ' + ip() + ' ' + hop(); },
      [&] { return "vorn_add_l3_host_ip4 " + place() + ' ' + ip() + ' ' + hop(); },
      [&] { return "vorn_delete_l3_host_by_addr_ip4 " + ip() + ' ' + place(); },
      [&] { return "vorn_add_l3_host_ip6 " + place() + ' ' + ip6() + ' ' + hop(); },
      [&] {
        return "vorn_add_l3_route_ip4 " + place() + ' ' + subnet() + " /2" + word(4) + ' ' + hop() +
               ' ' + word(2);
      },
      [&] {
        return "vorn_add_l3_route_ip4 " + place() + " 192.0.2.0 /24 " + hop() + ' ' + word(2);
      },
      [&] {
        return "vorn_add_l3_route_ip6 " + place() + ' ' + ip6() + " /6" + word(5) + ' ' + hop();
      },
      [&] { return "vorn_add_of_flow " + match(); },
      [&] { return "vorn_add_of_flow " + match() + " l3+" + word(20) + ":0x" + word(9) + "/0xff"; },
      [&] { return "vorn_add_of_flow_with_id " + match() + ' ' + id(); },
      [&] { return "vorn_delete_of_flow " + id(); },
      [&] { return "vorn_set_of_flow_priority " + id() + " -" + word(4); },
      [&] { return "vorn_add_of_flow_action " + id() + ' ' + action(); },
      [&] { return "vorn_add_of_flow_action " + id() + ' ' + action(); },
      [&] { return "vorn_add_arp_filter " + ip() + " 255.0.255." + word(256); },
      [&] { return "vorn_add_ip_protocol_filter " + word(256); },
      [&] { return "vorn_add_l4_destination_port_filter " + word(4); },
      [&] { return "link " + port() + (number(2) == 0 ? " up" : " down"); },
      [&] { return "cable " + port() + (number(3) == 0 ? " patch " + port() : " memory"); },
  };
  std::minstd_rand random_;
};

// All that reads of a card: tables, entry points, and where frames go.
std::string looks(Calls& calls) {
  std::string lines;
  for (const char* const topic : {"card", "port", "vlan", "class", "lag", "fdb", "lock", "l3",
                                  "flow", "filter", "mirror", "stp", "traffic", "flood", "cos"}) {
    lines += std::string("show ") + topic + "\n";
  }
  for (int port = 0; port < kPorts; ++port) {
    const std::string name = " 1/1/" + std::to_string(port);
    for (const char* const getter : {"port_speed",
                                     "port_duplex",
                                     "port_autoneg",
                                     "port_link_state",
                                     "port_mtu",
                                     "port_state",
                                     "port_ability",
                                     "port_advertising_ability",
                                     "port_current_ability",
                                     "port_peer_ability",
                                     "port_flow_control_8023x",
                                     "port_jaming_control",
                                     "port_stp_state",
                                     "port_bpdu_processing",
                                     "port_unicast_control",
                                     "port_multicast_control",
                                     "port_broadcast_control",
                                     "port_mirror",
                                     "port_flood_blocking_cpu",
                                     "port_switch_unknown_unicast_to_cpu",
                                     "port_ingress_discarding",
                                     "port_egress_admin_state",
                                     "port_stat_enabled",
                                     "port_pvid",
                                     "port_vlan_accept_frame",
                                     "port_mac_lock",
                                     "port_mac_lock_ext",
                                     "port_mac_limit"}) {
      lines += std::string("vorn_get_") + getter + name + "\n";
    }
    for (const char* const more : {"vorn_get_port_vlan_priority% 10", "vorn_get_port_mstp_state% 1",
                                   "vorn_get_port_cos_mapping% 3"}) {
      std::string line = more;
      lines += line.replace(line.find('%'), 1, name) + "\n";
    }
  }
  for (int id = 0; id < 5; ++id) {
    const std::string number = std::to_string(id);
    lines += "vorn_lag_id_to_lag_usp " + number + "\nvorn_get_l3_interface " + number +
             "\nvorn_get_of_flow_priority " + number + "\n";
  }
  lines += "vorn_get_system_mac_limit\nvorn_get_fdb_aging_time\nvorn_traverse_mac_table\n";
  // What autonegotiation hides shows without it, and what later calls make of the state.
  lines += "monitor\n";
  for (int i = 0; i < 40; ++i) lines += calls.frame() + "\n";
  lines += "monitor off\n";
  for (int port = 0; port < kPorts; ++port) {
    lines += "vorn_set_port_state 1/1/" + std::to_string(port) +
             " off\nvorn_set_port_autoneg 1/1/" + std::to_string(port) + " off\n";
  }
  lines +=
      "vorn_set_port_vlan_priority 1/1/0 0 7\nvorn_get_port_vlan_priority 1/1/0 10\nshow port\n";
  lines += "vorn_create_lag lag/9\nvorn_lag_usp_to_lag_id lag/9\nvorn_add_of_flow any\n";
  return lines;
}

std::string behind_mark(const std::string& printed) {
  const std::size_t mark = printed.find("MARK\n");
  EXPECT_NE(mark, std::string::npos) << printed;
  return mark == std::string::npos ? printed : printed.substr(mark);
}

class Saved : public testing::Test {
 protected:
  Saved() { folder.file("eight.card", kCard); }
  std::string vornsh(const std::string& script, const std::string& set_up = ":") {
    return run(folder, {"--card", "eight.card"}, script, set_up);
  }
  Folder folder;
};

TEST_F(Saved, LeadsAFreshCardThere) {
  for (int i = 0; i < (VORN_EMULATED ? 2 : 12); ++i) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Calls calls(seed);
    std::string script;
    for (int line = 0; line < 250; ++line) script += calls.line() + "\n";
    folder.file("looks.vorn", looks(calls));
    const std::string end = "echo MARK\nsource looks.vorn\n";
    const std::string there = vornsh(script + "save first.vorn\n" + end);
    const std::string again = vornsh("source first.vorn\nsave second.vorn\n" + end);
    EXPECT_EQ(again.find("first.vorn:"), std::string::npos) << again.substr(0, again.find("MARK"));
    ASSERT_EQ(behind_mark(again), behind_mark(there)) << folder.contents("first.vorn");
    ASSERT_EQ(folder.contents("second.vorn"), folder.contents("first.vorn"));
    EXPECT_NE(folder.contents("first.vorn").find("\nvorn_"), std::string::npos);
  }
}

// The file is the old one or the new one, and nothing else is left.
TEST_F(Saved, ReplacesAFileAsAWhole) {
  namespace fs = std::filesystem;
  folder.file("old", "what it was\n");
  fs::permissions(folder.path("old"), fs::perms::owner_read | fs::perms::owner_write);
  fs::create_symlink("old", folder.path("link"));
  EXPECT_EQ(vornsh("vorn_create_vlan 10\nsave link\n"), "ok\n[0]");
  EXPECT_NE(folder.contents("old").find("\nvorn_create_vlan 10\n"), std::string::npos);
  EXPECT_TRUE(fs::is_symlink(folder.path("link")));
  EXPECT_EQ(fs::status(folder.path("old")).permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(vornsh("save new\n", "umask 027"), "[0]");
  EXPECT_EQ(fs::status(folder.path("new")).permissions(), fs::perms(0640));
  folder.file("old", "what it was\n");
  EXPECT_EQ(vornsh("repeat 300 vorn_set_of_flow_priority $id 1\n"
                   "vorn_set_ports_mtu 1/1/0 100\nsave old\nsave no/where\nsave .\nsave\n",
                   "ulimit -f 0; trap '' XFSZ"),
            "stdin:1: $id: no output has had that name yet\nok\n"
            "stdin:3: save: cannot write old: File too large\n"
            "stdin:4: save: cannot write no/where: No such file or directory\n"
            "stdin:5: save: . is no regular file\n"
            "stdin:6: save: file is missing\n[1]");
  EXPECT_EQ(folder.contents("old"), "what it was\n");
  std::size_t files = 0;
  for (const auto& entry : fs::directory_iterator(folder.path(""))) {
    EXPECT_EQ(entry.path().string().find("old."), std::string::npos) << entry.path();
    ++files;
  }
  EXPECT_EQ(files, 4u);
}

}  // namespace
