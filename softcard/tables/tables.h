// SPDX-License-Identifier: Apache-2.0
//
// All tables of the card, and its counters. They stand side by side and know nothing of each other:
// the pipeline reads them together, and operations that concern more than one are the card's.
#ifndef SOFTCARD_TABLES_TABLES_H_
#define SOFTCARD_TABLES_TABLES_H_

#include <array>
#include <cstdint>
#include <vector>

#include "softcard/base/address_plan.h"
#include "softcard/base/hash.h"
#include "softcard/base/limits.h"
#include "softcard/base/net_types.h"
#include "softcard/tables/capacity.h"
#include "softcard/tables/cos_table.h"
#include "softcard/tables/counters.h"
#include "softcard/tables/drop_counters.h"
#include "softcard/tables/fdb_table.h"
#include "softcard/tables/filter_table.h"
#include "softcard/tables/flood_block_table.h"
#include "softcard/tables/flow_table.h"
#include "softcard/tables/l3_table.h"
#include "softcard/tables/lag_table.h"
#include "softcard/tables/mac_lock_table.h"
#include "softcard/tables/mirror_table.h"
#include "softcard/tables/port_table.h"
#include "softcard/tables/port_vlan_table.h"
#include "softcard/tables/stp_table.h"
#include "softcard/tables/traffic_table.h"
#include "softcard/tables/vlan_class_table.h"
#include "softcard/tables/vlan_table.h"

namespace softcard {

struct Tables {
  // The tables of a switch with these ports that nobody configured. `mstp_instance` is the
  // spanning-tree instance of each VLAN.
  Tables(const std::vector<PortDescription>& port_descriptions, const CardCapacity& capacity,
         const std::array<std::uint8_t, kVlanCount>& mstp_instance,
         KeyedHash hash = KeyedHash::drawn())
      : ports(port_descriptions),
        vlans(capacity.vlans, ports.all(), mstp_instance),
        port_vlans(ports.count(), capacity.protocol_vlans),
        vlan_classes(capacity.mac_vlans, capacity.subnet_vlans, hash),
        stp(ports.all()),
        lags(capacity.lags),
        fdb(capacity.fdb, hash),
        traffic(ports.all()),
        filters(capacity.arp_filters),
        flows(capacity.flows, hash),
        l3(capacity, hash),
        counters(ports.count()),
        drops(ports.count()) {}

  // The logical address of a port or LAG; 0/0/0 for a LAG that has none and for the rest.
  Usp usp_of(Destination destination) const {
    if (destination.is_port()) return AddressPlan::usp_of(destination.number);
    return destination.is_lag() ? lags.usp_of(destination.number) : Usp(0, 0, 0);
  }

  PortTable ports;
  VlanTable vlans;
  PortVlanTable port_vlans;
  VlanClassTable vlan_classes;
  StpTable stp;
  LagTable lags;
  FdbTable fdb;
  MacLockTable mac_locks;
  TrafficTable traffic;
  MirrorTable mirrors;
  FloodBlockTable flood_blocks;
  CosTable cos;
  FilterTable filters;
  FlowTable flows;
  L3Table l3;
  Counters counters;
  DropCounters drops;
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_TABLES_H_
