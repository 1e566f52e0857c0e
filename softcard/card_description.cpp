// SPDX-License-Identifier: Apache-2.0

#include "softcard/card_description.h"

#include <fstream>
#include <sstream>

#include "softcard/base/port_set.h"
#include "softcard/base/text.h"

namespace softcard {
namespace {

constexpr std::uint64_t kDefaultBaseMac = 0x02005e001000;
constexpr unsigned kSpeedsMbps[] = {10, 100, 1000, 2500, 10000, 25000, 40000, 100000};

struct CapacityName {
  const char* name;
  std::size_t CardCapacity::*member;
  std::size_t highest;
};
constexpr CapacityName kCapacityNames[] = {
    {"vlans", &CardCapacity::vlans, kMaxVlan},
    {"lags", &CardCapacity::lags, kMaxLagNumber},
    {"fdb", &CardCapacity::fdb, 1u << 24},
    {"l3-interfaces", &CardCapacity::l3_interfaces, 1u << 16},
    {"ipv4-hosts", &CardCapacity::ipv4_hosts, 1u << 24},
    {"ipv6-hosts", &CardCapacity::ipv6_hosts, 1u << 24},
    {"ipv4-routes", &CardCapacity::ipv4_routes, 1u << 24},
    {"ipv6-routes", &CardCapacity::ipv6_routes, 1u << 24},
    {"flows", &CardCapacity::flows, 1u << 24},
    {"mac-vlans", &CardCapacity::mac_vlans, 1u << 20},
    {"subnet-vlans", &CardCapacity::subnet_vlans, 1u << 20},
    {"protocol-vlans", &CardCapacity::protocol_vlans, 256},
    {"arp-filters", &CardCapacity::arp_filters, 1024},
};

void add_ports(CardDescription& card, unsigned count, unsigned speed_mbps) {
  for (unsigned i = 0; i < count; ++i) card.ports.push_back({speed_mbps, MacAddress()});
}

// Gives every port without an address of its own one that follows the base address.
void number_ports(CardDescription& card) {
  for (std::size_t i = 0; i < card.ports.size(); ++i) {
    MacAddress& mac = card.ports[i].mac;
    if (mac == MacAddress()) mac = MacAddress::from_number(card.base_mac.to_number() + 1 + i);
  }
}

// Reads one description, a statement at a time. Each statement returns what is wrong with it, empty
// when nothing is.
class Reader {
 public:
  std::string statement(const std::string& line) {
    std::istringstream in(line.substr(0, line.find('#')));
    words_.clear();
    for (std::string word; in >> word;) words_.push_back(word);
    if (words_.empty()) return "";
    if (words_[0] == "mac") return mac();
    if (words_[0] == "ports") return ports();
    if (words_[0] == "port") return port();
    if (words_[0] == "capacity") return capacity();
    if (words_[0] == "mstp-instance") return mstp_instance();
    if (words_[0] == "mac-moves") return mac_moves();
    if (words_[0] == "hash-seed") return hash_seed();
    return "unknown statement '" + words_[0] + "'";
  }

  CardDescription finish() {
    number_ports(card_);
    return card_;
  }

 private:
  std::string mac() {
    if (words_.size() != 2) return "usage: mac <address>";
    return address(words_[1], card_.base_mac);
  }

  std::string ports() {
    unsigned count = 0;
    unsigned speed_mbps = 0;
    if (words_.size() != 4 || words_[2] != "speed") return "usage: ports <count> speed <Mbit/s>";
    if (!ports_named_) card_.ports.clear();
    const unsigned room = kMaxPorts - static_cast<unsigned>(card_.ports.size());
    if (!parse_decimal(words_[1], 1u, static_cast<unsigned>(kMaxPorts), count)) {
      return "'" + words_[1] + "' is no number of ports (1 to " + std::to_string(kMaxPorts) + ")";
    }
    if (count > room) return "a card has at most " + std::to_string(kMaxPorts) + " ports";
    if (!parse_decimal(words_[3], 1u, 100000u, speed_mbps) || !is_speed(speed_mbps)) {
      return "'" + words_[3] + "' is no speed (10, 100, 1000, 2500, 10000, 25000, 40000 or 100000)";
    }
    ports_named_ = true;
    add_ports(card_, count, speed_mbps);
    return "";
  }

  std::string port() {
    unsigned index = 0;
    if (words_.size() != 4 || words_[2] != "mac") return "usage: port <number> mac <address>";
    if (!parse_decimal(words_[1], 0u, UINT32_MAX, index) || index >= card_.ports.size()) {
      return "'" + words_[1] + "' is none of the " + std::to_string(card_.ports.size()) +
             " ports named so far";
    }
    return address(words_[3], card_.ports[index].mac);
  }

  std::string capacity() {
    if (words_.size() != 3) return "usage: capacity <table> <entries>";
    for (const CapacityName& capacity : kCapacityNames) {
      if (words_[1] != capacity.name) continue;
      if (parse_decimal(words_[2], std::size_t{1}, capacity.highest,
                        card_.capacity.*capacity.member)) {
        return "";
      }
      return "'" + words_[2] + "' is no capacity for " + words_[1] + " (1 to " +
             std::to_string(capacity.highest) + ")";
    }
    return "unknown table '" + words_[1] + "'";
  }

  std::string mstp_instance() {
    unsigned instance = 0;
    if (words_.size() != 4 || words_[2] != "vlans") {
      return "usage: mstp-instance <number> vlans <VLAN>[-<VLAN>][,...]";
    }
    if (!parse_decimal(words_[1], 0u, kMstpInstances - 1, instance)) {
      return "'" + words_[1] + "' is no instance (0 to " + std::to_string(kMstpInstances - 1) + ")";
    }
    std::istringstream ranges(words_[3]);
    for (std::string range; std::getline(ranges, range, ',');) {
      const std::size_t dash = range.find('-');
      unsigned first = 0;
      unsigned last = 0;
      if (!parse_decimal(range.substr(0, dash), 1u, kMaxVlan, first) ||
          !parse_decimal(dash == std::string::npos ? range : range.substr(dash + 1), first,
                         kMaxVlan, last)) {
        return "'" + range + "' is no VLAN or range of VLANs (1 to " + std::to_string(kMaxVlan) +
               ")";
      }
      for (unsigned vlan = first; vlan <= last; ++vlan) {
        card_.mstp_instance[vlan] = static_cast<std::uint8_t>(instance);
      }
    }
    return "";
  }

  std::string mac_moves() {
    if (words_.size() == 2 && parse_decimal(words_[1], 0u, 1000000u, card_.mac_moves_per_second)) {
      return "";
    }
    return "usage: mac-moves <events a second>, 0 to 1000000";
  }

  std::string hash_seed() {
    std::uint64_t seed = 0;
    if (words_.size() != 2 || !parse_number(words_[1], std::uint64_t{0}, UINT64_MAX, seed)) {
      return "usage: hash-seed <number below 2^64>";
    }
    card_.hash_seed = seed;
    return "";
  }

  static std::string address(const std::string& text, MacAddress& mac) {
    MacAddress read;
    if (!parse_mac(text, read)) return "'" + text + "' is no address such as 02:00:5e:00:10:01";
    if (read.is_group() || read == MacAddress()) return "'" + text + "' is no station's address";
    mac = read;
    return "";
  }

  static bool is_speed(unsigned speed_mbps) {
    for (const unsigned speed : kSpeedsMbps) {
      if (speed == speed_mbps) return true;
    }
    return false;
  }

  CardDescription card_ = unnumbered();
  bool ports_named_ = false;
  std::vector<std::string> words_;

  static CardDescription unnumbered() {
    CardDescription card;
    for (PortDescription& port : card.ports) port.mac = MacAddress();
    return card;
  }
};

}  // namespace

CardDescription::CardDescription() : base_mac(MacAddress::from_number(kDefaultBaseMac)) {
  add_ports(*this, 48, 1000);
  add_ports(*this, 4, 10000);
  number_ports(*this);
}

bool read_card_description(std::istream& in, const std::string& name, CardDescription& out,
                           std::string& error) {
  Reader reader;
  unsigned number = 0;
  const auto fail = [&](const std::string& reason) {
    error = name + ":" + std::to_string(number) + ": " + reason;
    return false;
  };
  for (std::string line; std::getline(in, line);) {
    ++number;
    const std::string wrong = reader.statement(line);
    if (!wrong.empty()) return fail(wrong);
  }
  if (in.bad()) return fail("cannot be read any further");
  out = reader.finish();
  return true;
}

bool load_card_description(const std::string& path, CardDescription& out, std::string& error) {
  std::ifstream in(path);
  if (!in) {
    error = path + ": cannot be opened";
    return false;
  }
  return read_card_description(in, path, out, error);
}

}  // namespace softcard
