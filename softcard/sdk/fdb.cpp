// SPDX-License-Identifier: Apache-2.0
//
// The MAC table, its limits and locks.

#include <climits>

#include "softcard/sdk/sdk.h"

#include "softcard/sdk/conversions.h"
#include "softcard/tables/fdb_record.h"

namespace softcard {
namespace {

bool bit_of(const unsigned char* bitmap, unsigned vlan) {
  return (bitmap[vlan / 8] >> (vlan % 8) & 1) != 0;
}

// Hands on what add_...() of the table answers, and refuses when it is full.
bool added(const FdbTable& fdb, bool done) { return done || refuse_full("fdb", fdb.capacity()); }

// Whether `mp` is a VLAN that exists: module 0, and its number.
bool vlan_of(Card& card, const Mp& mp) {
  if (mp.module() != 0) return refuse(mp, " is no VLAN");
  return card.tables().vlans.require(mp.port());
}

// The entries that a flush removes everywhere.
FdbFilter flushed(bool and_static) {
  FdbFilter filter;
  filter.up_to = and_static ? FdbKind::static_entry : FdbKind::learned;
  return filter;
}

}  // namespace

bool SoftSdk::add_mac_to_port(const Mp& mp, const unsigned char* mac, unsigned int vlan,
                              bool trunk) {
  Destination destination;
  return tables_.vlans.require(vlan) && destination_of(card_, mp, trunk, destination) &&
         added(tables_.fdb, tables_.fdb.add_static(static_cast<std::uint16_t>(vlan), mac_of(mac),
                                                   destination, card_.now_seconds()));
}

bool SoftSdk::add_system_mac(const unsigned char* mac, unsigned int vlan) {
  return tables_.vlans.require(vlan) &&
         added(tables_.fdb, tables_.fdb.add_system(static_cast<std::uint16_t>(vlan), mac_of(mac),
                                                   card_.now_seconds()));
}

bool SoftSdk::add_system_mac_vlan_bitmap(const unsigned char* mac, const unsigned char* bitmap) {
  return card_.add_system_mac(mac_of(mac), bitmap);
}

bool SoftSdk::delete_mac(const unsigned char* mac, unsigned int vlan) {
  return in_range("VLAN", vlan, 1, kMaxVlan) &&
         (tables_.fdb.remove(static_cast<std::uint16_t>(vlan), mac_of(mac)) ||
          refuse("there is no ", mac_of(mac), " in VLAN ", vlan));
}

bool SoftSdk::delete_mac_vlan_bitmap(const unsigned char* mac, unsigned char* bitmap) {
  bool removed = false;
  for (unsigned vlan = 1; vlan <= kMaxVlan; ++vlan) {
    if (!bit_of(bitmap, vlan)) continue;
    removed |= tables_.fdb.remove(static_cast<std::uint16_t>(vlan), mac_of(mac));
  }
  return removed || refuse("there is no ", mac_of(mac), " in any VLAN of the bitmap");
}

bool SoftSdk::delete_mac_by_mac(const unsigned char* mac) {
  return tables_.fdb.remove_mac(mac_of(mac)) != 0 || refuse("there is no ", mac_of(mac));
}

bool SoftSdk::clear_fdb_by_port(const Mp& mp, bool trunk, bool and_static) {
  Destination destination;
  if (!destination_of(card_, mp, trunk, destination)) return false;
  FdbFilter filter = flushed(and_static);
  filter.destination = destination;
  tables_.fdb.flush(filter);
  return true;
}

bool SoftSdk::clear_fdb_by_vlan(unsigned int vlan, bool and_static) {
  if (!tables_.vlans.require(vlan)) return false;
  FdbFilter filter = flushed(and_static);
  filter.vlan = static_cast<std::uint16_t>(vlan);
  tables_.fdb.flush(filter);
  return true;
}

bool SoftSdk::clear_fdb_table(bool and_static) {
  tables_.fdb.flush(flushed(and_static));
  return true;
}

bool SoftSdk::set_fdb_aging_time(int seconds) {
  if (!in_range("ageing time", seconds, 0, INT_MAX)) return false;
  tables_.fdb.set_ageing_seconds(static_cast<std::uint32_t>(seconds));
  return true;
}

bool SoftSdk::get_fdb_aging_time(int& seconds) {
  seconds = static_cast<int>(tables_.fdb.ageing_seconds());
  return true;
}

bool SoftSdk::traverse_mac_table(void* arg) {
  const auto* const request = static_cast<const mac_traverse_s*>(arg);
  if (request == nullptr || request->visit == nullptr) {
    return refuse("the walk has no function to call");
  }
  bool more = true;
  const std::shared_ptr<const void> alive = card_.keep_alive();
  tables_.fdb.for_each([&](const FdbEntry& entry) {
    if (!more) return;
    const Usp usp = tables_.usp_of(entry.destination());
    const auto record = fdb_record<ctype_l2_addr_s>(
        entry.vlan(), entry.mac(), {usp.unit(), usp.slot(), usp.port()}, entry.kind());
    more = request->visit(&record, request->user_data) != 0 && !card_.ended();
  });
  return true;
}

bool SoftSdk::set_port_mac_lock(const Mp& mp, bool on) {
  return on_port(mp, [&](PortIndex port) { tables_.mac_locks.set_lock(port, on, true); });
}

bool SoftSdk::get_port_mac_lock(const Mp& mp, bool& on) {
  return on_port(mp, [&](PortIndex port) { on = tables_.mac_locks.locked(port); });
}

bool SoftSdk::set_port_mac_lock_ext(const Mp& mp, bool on, bool drop) {
  return on_port(mp, [&](PortIndex port) { tables_.mac_locks.set_lock(port, on, drop); });
}

bool SoftSdk::get_port_mac_lock_ext(const Mp& mp, bool& on, bool& drop) {
  return on_port(mp, [&](PortIndex port) {
    on = tables_.mac_locks.locked(port);
    drop = tables_.mac_locks.drop_setting(port);
  });
}

bool SoftSdk::set_system_mac_limit(const Mp& mp, int limit, unsigned int kind) {
  MacLockTable& limits = tables_.mac_locks;
  PortIndex port = 0;
  switch (kind) {
    case PORT_KIND_PHYSICAL:
      return port_of(card_.addresses(), mp, port) && limits.set_port_limit(port, limit);
    case PORT_KIND_LAG:
      return lag_of(card_, mp) && limits.set_lag_limit(mp.port(), limit);
    case PORT_KIND_VLAN:
      return vlan_of(card_, mp) && limits.set_vlan_limit(mp.port(), limit);
    case PORT_KIND_SYSTEM:
      if (mp != Mp(0, 0)) return refuse(mp, " is not the whole switch");
      return limits.set_system_limit(limit);
    default:
      return in_range("kind of port", kind, PORT_KIND_PHYSICAL, PORT_KIND_SYSTEM);
  }
}

bool SoftSdk::get_system_mac_limit(const Mp& mp, int& limit, unsigned int kind) {
  const MacLockTable& limits = tables_.mac_locks;
  PortIndex port = 0;
  if (mp == Mp(0, 0)) {
    limit = limits.system_limit();
    return true;
  }
  switch (kind) {
    case PORT_KIND_PHYSICAL:
      if (!port_of(card_.addresses(), mp, port)) return false;
      limit = limits.port_limit(port);
      return true;
    case PORT_KIND_LAG:
      if (!lag_of(card_, mp)) return false;
      limit = limits.lag_limit(mp.port());
      return true;
    case PORT_KIND_VLAN:
      if (!vlan_of(card_, mp)) return false;
      limit = limits.vlan_limit(mp.port());
      return true;
    case PORT_KIND_SYSTEM:
      return refuse(mp, " is not the whole switch");
    default:
      return in_range("kind of port", kind, PORT_KIND_PHYSICAL, PORT_KIND_SYSTEM);
  }
}

}  // namespace softcard
