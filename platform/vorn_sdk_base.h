// SPDX-License-Identifier: Apache-2.0
//
// The switch SDK as the client library sees it. The host process defines one class that derives
// from VornSdkBase, makes one object of it, and defines the accessors in vorn_sdk.h.
//
// REQUIRES, for every host:
//  - The position of each virtual function is the calling interface: the library calls through
//    the object's table by position. Slots 0 to 178 stand here in their order; a host adds
//    nothing in front of them. The class has no data members and no virtual destructor.
//  - Each operation returns true when it was carried out in full, false when it was refused.
//    The library hands that result to its caller and checks nothing else.
//  - The library translates ports and passes everything else through as its caller gave it:
//    it checks no range, no pointer and no enumeration value. What cannot be carried out must
//    be refused here.
//  - Outputs go straight into the caller's variables: an operation that returns false should
//    leave them alone.
//  - Nothing here is called before vornsdk_create_sdk_instance() or after
//    vornsdk_delete_sdk_instance(). The library takes no lock; calls come on the thread of the
//    library's caller.
//  - An exception passes through the library to its caller unchanged.
//
// The words used below:
//    mp       hardware port. A reference is valid during the call only.
//    trunk    true: mp has module 0 and its port is a LAG number instead of a hardware port.
//    mac      6 bytes, first byte on the wire first; valid during the call only.
//    ip6      16 bytes, first byte on the wire first; valid during the call only.
//    ip, mask IPv4 as a number: 192.0.2.1 is 0xc0000201.
//    vlan     VLAN number, 1 to 4094 unless said otherwise.
//    std::list<Mp>& that are inputs may be changed by the operation; nobody looks at them after.
//
// The terms of the operations are defined here once for clients and hosts alike. A host
// whose hardware gives one of them another meaning documents that for its clients.
#ifndef PLATFORM_VORN_SDK_BASE_H_
#define PLATFORM_VORN_SDK_BASE_H_

#include <list>
#include <string>

#include "vornlcapi/types.h"

class VornSdkBase {
 public:
  // ---- VLANs ------------------------------------------------------------------------------------

  // 0. Makes a VLAN without members. Refuses one that exists.
  virtual bool create_vlan(unsigned int vlan) = 0;
  // 1. Deletes a VLAN with its memberships. Refuses one that does not exist.
  virtual bool delete_vlan(unsigned int vlan) = 0;
  // 2. Adds members: frames of the VLAN leave `tagged` ports with an 802.1Q tag and `untagged`
  //    ports without. A port already a member changes to the kind given last.
  virtual bool add_ports_to_vlan(unsigned int vlan, std::list<Mp>& tagged,
                                 std::list<Mp>& untagged) = 0;
  // 3. Not called by the library.
  virtual bool reserved_3() { return false; }
  // 4. Removes members of either kind.
  virtual bool delete_ports_from_vlan(unsigned int vlan, std::list<Mp>& ports) = 0;
  // 5. Not called by the library.
  virtual bool reserved_5() { return false; }
  // 6. Appends the members of each kind to the lists, which are empty.
  virtual bool get_vlan_info(unsigned int vlan, std::list<Mp>& tagged, std::list<Mp>& untagged) = 0;

  // ---- Multiple spanning tree -------------------------------------------------------------------

  // 7. Sets the port's state in a spanning-tree instance. The instance comes first.
  virtual bool set_port_mstp_state(unsigned int instance, const Mp& mp, mstp_state_t state) = 0;
  // 8. The instance comes first.
  virtual bool get_port_mstp_state(unsigned int instance, const Mp& mp, mstp_state_t& state) = 0;

  // ---- Link aggregation -------------------------------------------------------------------------

  // 9. Makes a LAG without members and writes the id that it chose.
  virtual bool create_lag(unsigned int& id) = 0;
  // 10. Deletes a LAG; its members become ports of their own again.
  virtual bool delete_lag(unsigned int id) = 0;
  // 11. Makes `ports` members. The list holds the present members first, then the new ones: a
  //     port that is a member already counts as added.
  virtual bool add_ports_to_lag(unsigned int id, std::list<Mp>& ports) = 0;
  // 12. Removes `ports` from the members.
  virtual bool delete_ports_from_lag(unsigned int id, std::list<Mp>& ports) = 0;
  // 13. Sets what of a frame chooses the member that it leaves through.
  virtual bool set_lag_balancing_strategy(unsigned int id, lag_psc_t psc) = 0;
  // 14.
  virtual bool get_lag_balancing_strategy(unsigned int id, lag_psc_t& psc) = 0;
  // 15. Not called by the library.
  virtual bool reserved_15() { return false; }

  // ---- Mirroring and port settings --------------------------------------------------------------

  // 16. Copies the frames of `mirrored` that `type` names to `mirror_to`. A mirrored port has
  //     one mirror-to port.
  virtual bool set_port_mirror(const Mp& mirror_to, const Mp& mirrored, mirror_type_t type) = 0;
  // 17. Writes the mirror-to port of `mirrored` and the type; false when it is not mirrored.
  virtual bool get_port_mirror(Mp& mirror_to, const Mp& mirrored, mirror_type_t& type) = 0;
  // 18. Administrative state: a port that is off has no link.
  virtual bool set_port_state(const Mp& mp, bool on) = 0;
  // 19.
  virtual bool get_port_state(const Mp& mp, bool& on) = 0;
  // 20, 21. Not called by the library.
  virtual bool reserved_20() { return false; }
  virtual bool reserved_21() { return false; }
  // 22. Autonegotiation.
  virtual bool set_port_autoneg(const Mp& mp, bool on) = 0;
  // 23.
  virtual bool get_port_autoneg(const Mp& mp, bool& on) = 0;
  // 24. Fixes the speed; refuses one that the port has no ability for.
  virtual bool set_port_speed(const Mp& mp, speed_type_t speed) = 0;
  // 25. The speed in force.
  virtual bool get_port_speed(const Mp& mp, speed_type_t& speed) = 0;
  // 26. Fixes the duplex mode; refuses one that the port has no ability for.
  virtual bool set_port_duplex(const Mp& mp, duplex_type_t duplex) = 0;
  // 27. The duplex mode in force.
  virtual bool get_port_duplex(const Mp& mp, duplex_type_t& duplex) = 0;
  // 28. IEEE 802.3x pause frames: whether received ones are honoured, whether they are sent.
  virtual bool set_port_flow_control_8023x(const Mp& mp, bool receive, bool transmit) = 0;
  // 29. Writes two words. Exactly 1 means on; the library reads every other value as off.
  virtual bool get_port_flow_control_8023x(const Mp& mp, unsigned int& receive,
                                           unsigned int& transmit) = 0;
  // 30. Jamming: backpressure on a half-duplex port.
  virtual bool set_port_jaming_control(const Mp& mp, bool on) = 0;
  // 31.
  virtual bool get_port_jaming_control(const Mp& mp, bool& on) = 0;
  // 32, 33. Not called by the library.
  virtual bool reserved_32() { return false; }
  virtual bool reserved_33() { return false; }
  // 34. Largest frame in bytes: from the destination address on, without 802.1Q tag and checksum.
  virtual bool set_port_mtu(const Mp& mp, unsigned int bytes) = 0;
  // 35.
  virtual bool get_port_mtu(const Mp& mp, unsigned int& bytes) = 0;

  // ---- Port statistics --------------------------------------------------------------------------

  // 36. Whether the port's counters count. Off keeps their values.
  virtual bool set_port_stat_enable(const Mp& mp, bool on) = 0;
  // 37.
  virtual bool get_port_stat_enabled(const Mp& mp, bool& on) = 0;
  // 38. One counter, 64 bits.
  virtual bool get_port_stat_counter(const Mp& mp, stat_type_t type, unsigned long long& value) = 0;
  // 39. The low 32 bits of it.
  virtual bool get_port_stat_counter32(const Mp& mp, stat_type_t type, unsigned int& value) = 0;
  // 40. Appends every counter of the full set, in the order of stat_type_t, to what the
  //     caller's list holds.
  virtual bool get_port_stat_counter_all64(const Mp& mp, std::list<StatCounter64>& counters) = 0;
  // 41.
  virtual bool get_port_stat_counter_all32(const Mp& mp, std::list<StatCounter32>& counters) = 0;
  // 42. Fills an array. `count` is its room on the way in and the number filled on the way out;
  //     room for fewer than all is filled as far as it goes.
  virtual bool get_port_stat_counter_all64_ext(const Mp& mp, StatCounter64* counters,
                                               unsigned int& count) = 0;
  // 43.
  virtual bool get_port_stat_counter_all32_ext(const Mp& mp, StatCounter32* counters,
                                               unsigned int& count) = 0;
  // 44. One counter of the brief set.
  virtual bool get_port_brief_stat_counter64(const Mp& mp, brief_stat_type_t type,
                                             unsigned long long& value) = 0;
  // 45.
  virtual bool get_port_brief_stat_counter32(const Mp& mp, brief_stat_type_t type,
                                             unsigned int& value) = 0;
  // 46. The list is the library's own copy: its contents reach nobody, only the result does.
  virtual bool get_port_brief_stat_counter_all64(const Mp& mp,
                                                 std::list<BriefStatCounter64>& counters) = 0;
  // 47. Not called by the library.
  virtual bool reserved_47() { return false; }
  // 48. Sets all counters of the port to 0. Also reached when a caller asks for all 32-bit brief
  //     counters.
  virtual bool clear_port_stat_counter(const Mp& mp) = 0;

  // ---- Spanning tree ----------------------------------------------------------------------------

  // 49. Sets the port's state in the single spanning tree. The library flushes the port's
  //     learned addresses itself, through slot 59.
  virtual bool set_port_stp_state(const Mp& mp, stp_state_t state) = 0;
  // 50.
  virtual bool get_port_stp_state(const Mp& mp, stp_state_t& state) = 0;
  // 51. Whether BPDUs are handed to the CPU (on) or treated as ordinary multicast (off).
  virtual bool set_port_bpdu_processing(const Mp& mp, bool on) = 0;
  // 52.
  virtual bool get_port_bpdu_processing(const Mp& mp, bool& on) = 0;

  // ---- MAC table --------------------------------------------------------------------------------

  // 53. Binds an address to a port or LAG; it does not age.
  virtual bool add_mac_to_port(const Mp& mp, const unsigned char* mac, unsigned int vlan,
                               bool trunk) = 0;
  // 54. Makes an address the switch's own: frames to it go to the CPU.
  virtual bool add_system_mac(const unsigned char* mac, unsigned int vlan) = 0;
  // 55. The same in every VLAN of a bitmap of 512 bytes: VLAN v is bit v % 8 (bit 0 the lowest)
  //     of byte v / 8.
  virtual bool add_system_mac_vlan_bitmap(const unsigned char* mac,
                                          const unsigned char* bitmap) = 0;
  // 56. Deletes an entry of any kind; refuses when there is none. The address comes first.
  virtual bool delete_mac(const unsigned char* mac, unsigned int vlan) = 0;
  // 57. Deletes the address in every VLAN of the bitmap; VLANs without it are passed over, but
  //     one at least must have it.
  virtual bool delete_mac_vlan_bitmap(const unsigned char* mac, unsigned char* bitmap) = 0;
  // 58. Deletes the address in all VLANs; refuses when none has it.
  virtual bool delete_mac_by_mac(const unsigned char* mac) = 0;
  // 59. Removes the learned entries of a port or LAG, with `and_static` the static ones too;
  //     system entries stay.
  virtual bool clear_fdb_by_port(const Mp& mp, bool trunk, bool and_static) = 0;
  // 60. The same by VLAN.
  virtual bool clear_fdb_by_vlan(unsigned int vlan, bool and_static) = 0;
  // 61. The same for the whole table.
  virtual bool clear_fdb_table(bool and_static) = 0;
  // 62. Seconds after which a learned entry that no frame has used is removed; 0: never.
  virtual bool set_fdb_aging_time(int seconds) = 0;
  // 63.
  virtual bool get_fdb_aging_time(int& seconds) = 0;

  // ---- Links and MAC locks ----------------------------------------------------------------------

  // 64. Forces the PHY down, or lets it come up again.
  virtual bool set_port_link_state(const Mp& mp, phy_state_t state) = 0;
  // 65. Whether the port has a link. Exactly 1 means up; the library sends packets from the CPU
  //     only through such ports.
  virtual bool get_port_link_state(const Mp& mp, phy_state_t& state) = 0;
  // 66. Lock on: the port learns no more addresses and drops frames from unknown ones.
  virtual bool set_port_mac_lock(const Mp& mp, bool on) = 0;
  // 67.
  virtual bool get_port_mac_lock(const Mp& mp, bool& on) = 0;
  // 68. As 66; `drop` off lets frames from unknown addresses pass, still without learning them.
  virtual bool set_port_mac_lock_ext(const Mp& mp, bool on, bool drop) = 0;
  // 69.
  virtual bool get_port_mac_lock_ext(const Mp& mp, bool& on, bool& drop) = 0;

  // ---- Storm control ----------------------------------------------------------------------------

  // 70. Broadcast frames a second that the port lets in; 0: no limit.
  virtual bool set_port_broadcast_control(const Mp& mp, unsigned int frames_per_second) = 0;
  // 71.
  virtual bool get_port_broadcast_control(const Mp& mp, unsigned int& frames_per_second) = 0;
  // 72. The same for multicast frames.
  virtual bool set_port_multicast_control(const Mp& mp, unsigned int frames_per_second) = 0;
  // 73.
  virtual bool get_port_multicast_control(const Mp& mp, unsigned int& frames_per_second) = 0;
  // 74. The same for unicast frames whose destination is unknown.
  virtual bool set_port_unicast_control(const Mp& mp, unsigned int frames_per_second) = 0;
  // 75.
  virtual bool get_port_unicast_control(const Mp& mp, unsigned int& frames_per_second) = 0;

  // ---- What a port lets in and out --------------------------------------------------------------

  // 76. Whether the port sends. It goes on receiving.
  virtual bool set_port_egress_admin_state(const Mp& mp, bool on) = 0;
  // 77.
  virtual bool get_port_egress_admin_state(const Mp& mp, bool& on) = 0;
  // 78. Which frames are thrown away as they come in.
  virtual bool set_port_ingress_discarding(const Mp& mp, ingress_discard_type_t type) = 0;
  // 79.
  virtual bool get_port_ingress_discarding(const Mp& mp, ingress_discard_type_t& type) = 0;

  // ---- VLAN settings of a port ------------------------------------------------------------------

  // 80. VLAN of untagged frames that no other rule classifies.
  virtual bool set_port_pvid(const Mp& mp, unsigned int vlan) = 0;
  // 81.
  virtual bool get_port_pvid(const Mp& mp, unsigned int& vlan) = 0;
  // 82. 802.1p priority, 0 to 7, of frames that come in untagged and are put into `vlan`; vlan 0
  //     sets it for all VLANs that have none of their own.
  virtual bool set_port_vlan_priority(const Mp& mp, unsigned int vlan, unsigned int priority) = 0;
  // 83.
  virtual bool get_port_vlan_priority(const Mp& mp, unsigned int vlan, unsigned int& priority) = 0;
  // 84. Accepted frames: true all, false only tagged ones (VLAN 0 counts as untagged).
  virtual bool set_port_vlan_accept_frame(const Mp& mp, bool all) = 0;
  // 85.
  virtual bool get_port_vlan_accept_frame(const Mp& mp, bool& all) = 0;

  // ---- MAC limits -------------------------------------------------------------------------------

  // 86. Most addresses that may be learned; -1: no limit. `kind` is PORT_KIND_...: the port, or
  //     with PORT_KIND_SYSTEM and Mp(0, 0) the whole switch. Setting the limit of a LAG or VLAN
  //     interface arrives as PORT_KIND_PHYSICAL with Mp(0, 0), which names no port.
  virtual bool set_system_mac_limit(const Mp& mp, int limit, unsigned int kind) = 0;
  // 87. With Mp(0, 0) the switch-wide limit, whatever `kind` says: the caller's is not set then.
  virtual bool get_system_mac_limit(const Mp& mp, int& limit, unsigned int kind) = 0;

  // ---- Protocol, MAC and subnet VLANs -----------------------------------------------------------

  // 88. Puts untagged frames of a protocol that come in through the port into a VLAN.
  virtual bool set_port_protocol_vlan(const Mp& mp, frame_type_t type, unsigned short protocol,
                                      unsigned int vlan) = 0;
  // 89.
  virtual bool delete_port_protocol_vlan(const Mp& mp, frame_type_t type,
                                         unsigned short protocol) = 0;
  // 90. Deletes all protocol VLANs of the port.
  virtual bool delete_port_protocol_vlan_all(const Mp& mp) = 0;
  // 91. Puts untagged frames from an address into a VLAN with an 802.1p priority; vlan 0 deletes
  //     the rule. Where several rules fit: MAC before subnet before protocol before PVID.
  virtual bool set_mac_vlan(const unsigned char* mac, unsigned int vlan, unsigned int priority) = 0;
  // 92. The same for untagged frames from an IPv4 subnet; the longest mask wins.
  virtual bool set_ipv4_subnet_vlan(unsigned int ip, unsigned int mask, unsigned int vlan,
                                    unsigned int priority) = 0;
  // 93. The same for an IPv6 subnet of `prefix_length` bits, 0 to 128.
  virtual bool set_ipv6_subnet_vlan(const unsigned char* ip6, unsigned int prefix_length,
                                    unsigned int vlan, unsigned int priority) = 0;

  // ---- Packets from the CPU ---------------------------------------------------------------------

  // 94. Sends a frame out of each port listed: `tagged` ports with an 802.1Q tag (the frame's own,
  //     else one with the port's PVID), `untagged` ports without. A port listed twice sends
  //     twice. Whether two empty lists are an error is the SDK's choice.
  virtual bool send_packet_by_port(std::list<Mp>& tagged, std::list<Mp>& untagged,
                                   const Packet& packet) = 0;
  // 95. Forwards a frame as if it had come in through a port of its VLAN: that of its tag, else
  //     VLAN 1.
  virtual bool send_packet_from_cpu(const Packet& packet) = 0;

  // ---- Port abilities ---------------------------------------------------------------------------

  // 96. What the port can do.
  virtual bool get_port_ability(const Mp& mp, port_ability_type_t& ability) = 0;
  // 97. What autonegotiation offers; refuses more than the port can do.
  virtual bool set_port_advertising_ability(const Mp& mp, port_ability_type_t ability) = 0;
  // 98.
  virtual bool get_port_advertising_ability(const Mp& mp, port_ability_type_t& ability) = 0;
  // 99. What is in force: one speed and duplex mode, and pause; none without a link.
  virtual bool get_port_current_ability(const Mp& mp, port_ability_type_t& ability) = 0;
  // 100. What the link partner offers. The port comes by value.
  virtual bool get_port_peer_ability(Mp mp, port_ability_type_t& ability) = 0;

  // ---- Flood blocking ---------------------------------------------------------------------------

  // 101. Keeps floods of the kinds in `type` that come in through `from` from leaving through
  //      `to`; replaces what was set for the pair.
  virtual bool set_port_flood_blocking(const Mp& from, const Mp& to, flood_block_type_t type) = 0;
  // 102.
  virtual bool get_port_flood_blocking(const Mp& from, const Mp& to, flood_block_type_t& type) = 0;
  // 103. Keeps such floods from the CPU.
  virtual bool set_port_flood_blocking_cpu(const Mp& from, flood_block_type_t type) = 0;
  // 104.
  virtual bool get_port_flood_blocking_cpu(const Mp& from, flood_block_type_t& type) = 0;

  // ---- Class of service -------------------------------------------------------------------------

  // 105. Egress queue, 0 to 7, of frames with an 802.1p priority, 0 to 7, that leave the port.
  virtual bool set_port_cos_mapping(const Mp& mp, unsigned int priority, unsigned int queue) = 0;
  // 106.
  virtual bool get_port_cos_mapping(const Mp& mp, unsigned int priority, unsigned int& queue) = 0;

  // ---- The switch as a whole --------------------------------------------------------------------

  // 107. Writes the address of the line card: its unit and slot, port 0.
  virtual bool get_line_card_usp(Usp& usp) = 0;
  // 108. A service of the host's own, chosen by number.
  virtual bool free_call(int number) = 0;
  // 109. SWITCH_FORWARD_MODE_...
  virtual bool set_switch_forward_mode(unsigned int mode) = 0;
  // 110.
  virtual bool get_switch_forward_mode(unsigned int& mode) = 0;

  // ---- Packet filters: frames that go to the CPU and nowhere else -------------------------------

  // 111. ARP packets whose target address is `ip` under `mask`.
  virtual bool add_arp_filter(unsigned int ip, unsigned int mask) = 0;
  // 112.
  virtual bool delete_arp_filter(unsigned int ip, unsigned int mask) = 0;
  // 113.
  virtual bool delete_arp_filter_all() = 0;
  // 114. IPv4 and IPv6 packets of a protocol, 0 to 255.
  virtual bool add_ip_protocol_filter(unsigned int protocol) = 0;
  // 115.
  virtual bool delete_ip_protocol_filter(unsigned int protocol) = 0;
  // 116.
  virtual bool delete_ip_protocol_filter_all() = 0;
  // 117. TCP and UDP packets to a port, 0 to 65535.
  virtual bool add_l4_destination_port_filter(unsigned int port) = 0;
  // 118.
  virtual bool delete_l4_destination_port_filter(unsigned int port) = 0;
  // 119.
  virtual bool delete_l4_destination_port_filter_all() = 0;

  // ---- Layer 2 and unknown unicast --------------------------------------------------------------

  // 120. Whether the port forwards by the FDB. Off: its frames reach only the CPU, the flow
  //      table and layer 3, and no frame is sent out by the FDB.
  virtual bool set_port_l2_enable(const Mp& mp, bool on) = 0;
  // 121. Whether unicast frames to unknown addresses that come in through the port are handed to
  //      the CPU, besides being flooded.
  virtual bool set_port_switch_unknown_unicast_to_cpu(const Mp& mp, bool on) = 0;
  // 122.
  virtual bool get_port_switch_unknown_unicast_to_cpu(const Mp& mp, bool& on) = 0;
  // 123. The same for all ports.
  virtual bool set_switch_unknown_unicast_to_cpu(bool on) = 0;
  // 124.
  virtual bool get_switch_unknown_unicast_to_cpu(bool& on) = 0;

  // ---- Flow table -------------------------------------------------------------------------------

  // 125. Adds a flow and writes the id that it chose. flow.in_port counts only with
  //      OF_MATCH_IN_PORT; it is Mp(0, 0) without. A new flow has priority 32768 and no action:
  //      it drops what it matches.
  virtual bool add_of_flow(of_flow_mp_s& flow, unsigned int& id,
                           const of_flow_qualify_udf_s& udf) = 0;
  // 126. Adds a flow under an id of the caller's choice, without a qualifier; refuses one in use.
  virtual bool add_of_flow_with_id(of_flow_mp_s& flow, unsigned int id) = 0;
  // 127. Deletes a flow with its actions.
  virtual bool delete_of_flow(unsigned int id) = 0;
  // 128. Deletes all flows.
  virtual bool clear_of_flow_table() = 0;
  // 129. Appends an action. `mp` is the port of an OUTPUT to a flow port above 6, and Mp(0, 0)
  //      for every other action.
  virtual bool add_of_flow_action(unsigned int id, of_action_t kind, of_action_param_s param,
                                  const Mp& mp) = 0;
  // 130. Removes the action with the same kind and parameter.
  virtual bool delete_of_flow_action(unsigned int id, of_action_t kind, of_action_param_s param,
                                     const Mp& mp) = 0;
  // 131. Removes all actions of a flow.
  virtual bool clear_of_flow_action(unsigned int id) = 0;
  // 132. The matching flow with the highest priority wins; of equal ones that with the lowest id.
  virtual bool set_of_flow_priority(unsigned int id, int priority) = 0;
  // 133.
  virtual bool get_of_flow_priority(unsigned int id, int& priority) = 0;
  // 134. Packets that the flow has handled.
  virtual bool get_of_flow_stat_counter64(unsigned int id, unsigned long long& packets) = 0;
  // 135. The low 32 bits of it.
  virtual bool get_of_flow_stat_counter32(unsigned int id, unsigned int& packets) = 0;

  // ---- Callbacks --------------------------------------------------------------------------------
  // The SDK keeps the registration and calls the function with `user_data`. The records it
  // hands over are its own and valid during the call only. The class form and the C form of a
  // kind are separate registrations, and both are called.

  // 136.
  virtual bool register_mac_update_callback(void (*callback)(L2Addr*, int, void*),
                                            void* user_data) = 0;
  // 137.
  virtual bool register_mac_update_callback_c(void (*callback)(ctype_l2_addr_s*, int, void*),
                                              void* user_data) = 0;
  // 138. `user_data` is always null.
  virtual bool register_link_change_callback(void (*callback)(LinkStatus*, Usp*),
                                             void* user_data) = 0;
  // 139. `user_data` is always null.
  virtual bool register_link_change_callback_c(void (*callback)(ctype_link_status_s*, usp_s*),
                                               void* user_data) = 0;
  // 140.
  virtual bool register_rx_packet_callback(void (*callback)(RxPacket*, void*), void* user_data) = 0;
  // 141.
  virtual bool register_rx_packet_callback_c(void (*callback)(ctype_rx_packet_s*, void*),
                                             void* user_data) = 0;
  // 142. Removes the registration of that kind with this function and user data, whichever form
  //      it has. Refuses when there is none.
  virtual bool deregister_event_callback(lcmgr_report_event_t event, void* callback,
                                         void* user_data) = 0;
  // 143, 144. Not called by the library.
  virtual bool reserved_143() { return false; }
  virtual bool reserved_144() { return false; }
  // 145. Walks the MAC table; `arg` points at a mac_traverse_s. A walk that the visitor ends is
  //      a success; a null `arg` or visitor is refused.
  virtual bool traverse_mac_table(void* arg) = 0;
  // 146 to 151. Not called by the library.
  virtual bool reserved_146() { return false; }
  virtual bool reserved_147() { return false; }
  virtual bool reserved_148() { return false; }
  virtual bool reserved_149() { return false; }
  virtual bool reserved_150() { return false; }
  virtual bool reserved_151() { return false; }

  // ---- Layer-3 interfaces -----------------------------------------------------------------------

  // 152. Makes a router interface: frames to `mac` in `vlan` are routed. Writes its id.
  virtual bool create_l3_interface(const unsigned char* mac, unsigned int vlan,
                                   unsigned int& id) = 0;
  // 153. Makes one under an id of the caller's choice; `replace` lets it take the place of the
  //      interface that has the id, which is refused without.
  virtual bool create_l3_interface_with_id(const unsigned char* mac, unsigned int vlan,
                                           unsigned int id, bool replace) = 0;
  // 154. Writes VLAN and address.
  virtual bool get_l3_interface(unsigned int id, unsigned int& vlan, unsigned char* mac) = 0;
  // 155. Deletes an interface; refuses while hosts or routes lead through it.
  virtual bool delete_l3_interface(const unsigned char* mac, unsigned int vlan) = 0;
  // 156. The same by id.
  virtual bool delete_l3_interface_by_id(unsigned int id) = 0;
  // 157. The same for all of them: deletes none when one is in use.
  virtual bool delete_l3_interface_all() = 0;

  // ---- Layer-3 hosts and routes -----------------------------------------------------------------
  // An entry is known by its address or subnet together with its port. `mac` is the next hop's
  // address, `interface` the router interface that the packet leaves through: its address
  // becomes the source and its VLAN the frame's VLAN.

  // 158. The port comes by value.
  virtual bool add_l3_host_ip4(Mp mp, bool trunk, unsigned int ip, const unsigned char* mac,
                               unsigned int interface) = 0;
  // 159. The port comes by value.
  virtual bool add_l3_host_ip6(Mp mp, bool trunk, const unsigned char* ip6,
                               const unsigned char* mac, unsigned int interface) = 0;
  // 160. Writes 6 bytes of address and the interface. The port comes by value, the flag last.
  virtual bool get_l3_host_ip4(unsigned int ip, Mp mp, unsigned char* mac, unsigned int& interface,
                               bool trunk) = 0;
  // 161. The port comes by value, the flag last.
  virtual bool get_l3_host_ip6(const unsigned char* ip6, Mp mp, unsigned char* mac,
                               unsigned int& interface, bool trunk) = 0;
  // 162.
  virtual bool get_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Mp& mp,
                                          bool trunk, unsigned char (&mac)[6],
                                          unsigned int& interface, unsigned int& metric) = 0;
  // 163. Writes the interface and 6 bytes of address.
  virtual bool get_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                          const Mp& mp, bool trunk, unsigned int& interface,
                                          unsigned char* mac) = 0;
  // 164. Deletes the hosts of an interface: IPv6 ones with `ip6`, else IPv4 ones.
  virtual bool delete_l3_host_by_interface(unsigned int interface, bool ip6) = 0;
  // 165. Deletes the hosts whose address has the same first 24 bits.
  virtual bool delete_l3_host_by_network_ip4(unsigned int ip) = 0;
  // 166. Deletes the hosts whose address has the same first 64 bits.
  virtual bool delete_l3_host_by_network_ip6(const unsigned char* ip6) = 0;
  // 167.
  virtual bool delete_l3_host_by_addr_ip4(unsigned int ip, const Mp& mp, bool trunk) = 0;
  // 168.
  virtual bool delete_l3_host_by_addr_ip6(const unsigned char* ip6, const Mp& mp, bool trunk) = 0;
  // 169. Deletes all hosts.
  virtual bool clear_l3_host_table() = 0;
  // 170, 171. Not called by the library.
  virtual bool reserved_170() { return false; }
  virtual bool reserved_171() { return false; }
  // 172. Among routes of one subnet the lowest metric wins, then the earliest.
  virtual bool add_l3_route_ip4(const Mp& mp, bool trunk, unsigned int ip, unsigned int mask,
                                const unsigned char* mac, unsigned int interface,
                                unsigned int metric) = 0;
  // 173. The metric of an IPv6 route is 0.
  virtual bool add_l3_route_ip6(const Mp& mp, bool trunk, const unsigned char* ip6,
                                const unsigned char* mask6, const unsigned char* mac,
                                unsigned int interface) = 0;
  // 174. Deletes the routes of an interface: IPv6 ones with `ip6`, else IPv4 ones.
  virtual bool delete_l3_route_by_interface(unsigned int interface, bool ip6) = 0;
  // 175.
  virtual bool delete_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Mp& mp,
                                             bool trunk) = 0;
  // 176.
  virtual bool delete_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                             const Mp& mp, bool trunk) = 0;
  // 177. Deletes all routes.
  virtual bool clear_l3_route_table() = 0;

  // ---- Tracing ----------------------------------------------------------------------------------

  // 178. Switches the host's tracing of a level ("trace_level_sdk", "trace_level_xrl",
  //      "trace_level_all") or of a module ("fdb", "vlan", ...) on or off.
  virtual bool set_lcmgr_trace(const std::string& target, bool on) = 0;

 protected:
  VornSdkBase() = default;
  VornSdkBase(const VornSdkBase&) = default;
  VornSdkBase& operator=(const VornSdkBase&) = default;
  // Neither virtual nor public: slot 0 stays first, and the host deletes the object as the
  // class that it made.
  ~VornSdkBase() = default;
};

#endif  // PLATFORM_VORN_SDK_BASE_H_
