/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Enumerations of the line card interface, for C99 and for C++11 and later.
 *
 * The library hands every value through to the SDK unchanged, values without a name here
 * included; what a value does is the SDK's to carry out. Each enumeration is 4 bytes on every
 * target. In C++ its underlying type is unsigned int, so that every 32-bit value is valid.
 */
#ifndef VORNLCAPI_ENUMS_H_
#define VORNLCAPI_ENUMS_H_

#ifdef __cplusplus
#define VORN_ENUM_BASE : unsigned int
#else
#define VORN_ENUM_BASE
#endif

/* ---- Spanning tree --------------------------------------------------------------------------- */

/* State of a port in the single spanning tree. Setting state 0 on one port or LAG also flushes
 * the addresses learned there. */
typedef enum stp_state_t VORN_ENUM_BASE {
  STP_STATE_BLOCKING = 0,   /* drops data, learns nothing, hands BPDUs to the CPU */
  STP_STATE_LISTENING = 1,  /* as blocking, while the tree settles */
  STP_STATE_LEARNING = 2,   /* drops data but learns source addresses */
  STP_STATE_FORWARDING = 3, /* learns and forwards */
  STP_STATE_DISABLED = 4    /* drops everything, BPDUs included */
} stp_state_t;

/* State of a port in one instance of the multiple spanning tree; same meanings. */
typedef enum mstp_state_t VORN_ENUM_BASE {
  MSTP_STATE_BLOCKING = 0,
  MSTP_STATE_LISTENING = 1,
  MSTP_STATE_LEARNING = 2,
  MSTP_STATE_FORWARDING = 3,
  MSTP_STATE_DISABLED = 4
} mstp_state_t;

/* ---- Physical settings ----------------------------------------------------------------------- */

/* Link (PHY) state of a port. The library itself relies on 1 meaning up. */
typedef enum phy_state_t VORN_ENUM_BASE { PHY_STATE_DOWN = 0, PHY_STATE_UP = 1 } phy_state_t;

/* Speed in Mbit/s: the value is the number. */
typedef enum speed_type_t VORN_ENUM_BASE {
  SPEED_TYPE_UNKNOWN = 0, /* no link */
  SPEED_TYPE_10 = 10,
  SPEED_TYPE_100 = 100,
  SPEED_TYPE_1000 = 1000,
  SPEED_TYPE_2500 = 2500,
  SPEED_TYPE_10000 = 10000,
  SPEED_TYPE_25000 = 25000,
  SPEED_TYPE_40000 = 40000,
  SPEED_TYPE_100000 = 100000
} speed_type_t;

typedef enum duplex_type_t VORN_ENUM_BASE {
  DUPLEX_TYPE_HALF = 0,
  DUPLEX_TYPE_FULL = 1
} duplex_type_t;

/* A set of port abilities: the enumerators are bits and are or-ed together. */
typedef enum port_ability_type_t VORN_ENUM_BASE {
  PORT_ABILITY_NONE = 0x0000,
  PORT_ABILITY_10_HALF = 0x0001,
  PORT_ABILITY_10_FULL = 0x0002,
  PORT_ABILITY_100_HALF = 0x0004,
  PORT_ABILITY_100_FULL = 0x0008,
  PORT_ABILITY_1000_HALF = 0x0010,
  PORT_ABILITY_1000_FULL = 0x0020,
  PORT_ABILITY_2500_FULL = 0x0040,
  PORT_ABILITY_10000_FULL = 0x0080,
  PORT_ABILITY_25000_FULL = 0x0100,
  PORT_ABILITY_40000_FULL = 0x0200,
  PORT_ABILITY_100000_FULL = 0x0400,
  PORT_ABILITY_PAUSE_RX = 0x1000, /* honours received IEEE 802.3x pause frames */
  PORT_ABILITY_PAUSE_TX = 0x2000  /* sends them */
} port_ability_type_t;

/* ---- Traffic --------------------------------------------------------------------------------- */

/* Which frames of the mirrored port are copied to the mirror-to port. */
typedef enum mirror_type_t VORN_ENUM_BASE {
  MIRROR_TYPE_NONE = 0,    /* ends the mirroring of this port */
  MIRROR_TYPE_INGRESS = 1, /* as they came in */
  MIRROR_TYPE_EGRESS = 2,  /* as they went out */
  MIRROR_TYPE_BOTH = 3
} mirror_type_t;

/* Kinds of flooded frames that are kept from a destination: bits, or-ed together. */
typedef enum flood_block_type_t VORN_ENUM_BASE {
  FLOOD_BLOCK_NONE = 0,
  FLOOD_BLOCK_UNKNOWN_UNICAST = 1,
  FLOOD_BLOCK_MULTICAST = 2,
  FLOOD_BLOCK_BROADCAST = 4,
  FLOOD_BLOCK_ALL = 7
} flood_block_type_t;

/* Which frames a port throws away as they come in. */
typedef enum ingress_discard_type_t VORN_ENUM_BASE {
  INGRESS_DISCARD_NONE = 0,
  INGRESS_DISCARD_UNTAGGED = 1, /* without an 802.1Q tag, or tagged with VLAN 0 */
  INGRESS_DISCARD_TAGGED = 2,   /* tagged with a VLAN other than 0 */
  INGRESS_DISCARD_ALL = 3
} ingress_discard_type_t;

/* Encapsulation by which a protocol VLAN recognises its protocol. */
typedef enum frame_type_t VORN_ENUM_BASE {
  FRAME_TYPE_ETHERNET = 0, /* Ethernet II: the protocol is the EtherType */
  FRAME_TYPE_SNAP = 1,     /* 802.3 with LLC and SNAP: the protocol is the SNAP type */
  FRAME_TYPE_LLC = 2       /* 802.3 with LLC: the protocol is DSAP << 8 | SSAP */
} frame_type_t;

/* ---- Link aggregation ------------------------------------------------------------------------ */

/* Port selection criterion: what of a frame chooses the LAG member that it leaves through.
 * Frames that are equal in it leave through the same member while the members stay the same. */
typedef enum lag_psc_t VORN_ENUM_BASE {
  LAG_PSC_SRC_MAC = 1,
  LAG_PSC_DST_MAC = 2,
  LAG_PSC_SRC_DST_MAC = 3,
  LAG_PSC_SRC_IP = 4, /* of frames that are not IP, the MAC addresses, here and below */
  LAG_PSC_DST_IP = 5,
  LAG_PSC_SRC_DST_IP = 6,
  LAG_PSC_SRC_DST_IP_PORT = 7 /* and the TCP or UDP ports */
} lag_psc_t;

/* ---- Flow table ------------------------------------------------------------------------------ */

/* Kind of a flow action; of_action_param_s says what its three words mean for each. */
typedef enum of_action_t VORN_ENUM_BASE {
  OF_ACTION_OUTPUT = 0,
  OF_ACTION_SET_VLAN_ID = 1,
  OF_ACTION_SET_VLAN_PRIORITY = 2,
  OF_ACTION_STRIP_VLAN = 3,
  OF_ACTION_SET_SRC_MAC = 4,
  OF_ACTION_SET_DST_MAC = 5,
  OF_ACTION_SET_SRC_IP = 6,
  OF_ACTION_SET_DST_IP = 7,
  OF_ACTION_SET_TOS = 8,
  OF_ACTION_SET_SRC_L4_PORT = 9,
  OF_ACTION_SET_DST_L4_PORT = 10,
  OF_ACTION_SET_QUEUE = 11
} of_action_t;

/* The flow port numbers that name no physical port. Number n above 6 is the port 1/1/(n - 7). */
enum {
  OF_PORT_DROP = 0,       /* nowhere */
  OF_PORT_IN_PORT = 1,    /* back to the port that the frame came from */
  OF_PORT_CONTROLLER = 2, /* the CPU, as a received packet with RX_REASON_FLOW */
  OF_PORT_NORMAL = 3,     /* the ordinary way: layer 3, then the FDB */
  OF_PORT_FLOOD = 4,      /* every other port of the frame's VLAN */
  OF_PORT_ALL = 5,        /* every other port whose link is up */
  OF_PORT_LOCAL = 6,      /* the CPU, as a received packet with RX_REASON_LOCAL */
  OF_PORT_FIRST_PHYSICAL = 7
};

/* Values of vorn_set_switch_forward_mode. */
enum {
  SWITCH_FORWARD_MODE_HYBRID = 0, /* flow table first, frames without a flow go the ordinary way */
  SWITCH_FORWARD_MODE_FLOW = 1,   /* flow table only; a frame without a flow is dropped */
  SWITCH_FORWARD_MODE_NORMAL = 2  /* the flow table is not asked */
};

/* ---- Events ---------------------------------------------------------------------------------- */

/* The kinds of event that a callback can be registered for. */
typedef enum lcmgr_report_event_t VORN_ENUM_BASE {
  LCMGR_REPORT_RX_PACKET = 0,
  LCMGR_REPORT_LINK_CHANGE = 1,
  LCMGR_REPORT_MAC_UPDATE = 2
} lcmgr_report_event_t;

/* The `int` argument of the MAC-update callbacks. */
enum {
  MAC_UPDATE_LEARNED = 1, /* the entry is new */
  MAC_UPDATE_MOVED = 2,   /* a learned entry is now on the port given */
  MAC_UPDATE_REMOVED = 3  /* aged out, flushed or deleted */
};

/* Why a packet was handed to the CPU. */
enum {
  RX_REASON_RESERVED = 1, /* a reserved group address: BPDU, LACP, LLDP and the like */
  RX_REASON_ARP_FILTER = 2,
  RX_REASON_IP_PROTOCOL_FILTER = 3,
  RX_REASON_L4_PORT_FILTER = 4,
  RX_REASON_SYSTEM_MAC = 5,      /* the destination is a system address of the FDB */
  RX_REASON_UNKNOWN_UNICAST = 6, /* no FDB entry, and unknown unicast goes to the CPU */
  RX_REASON_FLOOD = 7,           /* the CPU's copy of a broadcast or multicast */
  RX_REASON_FLOW = 8,            /* a flow's output to OF_PORT_CONTROLLER */
  RX_REASON_LOCAL = 9,           /* a flow's output to OF_PORT_LOCAL */
  RX_REASON_ROUTER = 10,         /* to a router interface, but not to be routed: ARP and the like */
  RX_REASON_TTL = 11,            /* the TTL or hop limit ran out on the way */
  RX_REASON_NO_ROUTE = 12,       /* to a router interface, and no host or route matches */
  RX_REASON_OPTIONS = 13,        /* IP options, left to the CPU */
  RX_REASON_MTU = 14             /* too large for the router's way out */
};

/* ---- Statistics ------------------------------------------------------------------------------ */

/* One counter of a port's full set. Octets count the whole frame without its checksum. */
typedef enum stat_type_t VORN_ENUM_BASE {
  STAT_IN_OCTETS = 0,
  STAT_IN_UNICAST_PACKETS = 1,
  STAT_IN_MULTICAST_PACKETS = 2,
  STAT_IN_BROADCAST_PACKETS = 3,
  STAT_IN_DISCARDS = 4, /* well-formed frames that were not forwarded, for whatever reason */
  STAT_IN_ERRORS = 5,   /* runts, malformed, above the MTU, and lost in front of the port */
  STAT_OUT_OCTETS = 6,
  STAT_OUT_UNICAST_PACKETS = 7,
  STAT_OUT_MULTICAST_PACKETS = 8,
  STAT_OUT_BROADCAST_PACKETS = 9,
  STAT_OUT_DISCARDS = 10,  /* frames meant for this port that it may not send */
  STAT_OUT_ERRORS = 11,    /* frames that the cable refused */
  STAT_IN_PACKETS_64 = 12, /* by frame size in octets, checksum counted */
  STAT_IN_PACKETS_65_127 = 13,
  STAT_IN_PACKETS_128_255 = 14,
  STAT_IN_PACKETS_256_511 = 15,
  STAT_IN_PACKETS_512_1023 = 16,
  STAT_IN_PACKETS_1024_1518 = 17,
  STAT_IN_PACKETS_1519_MAX = 18,
  STAT_IN_UNDERSIZE = 19,
  STAT_IN_OVERSIZE = 20,      /* above the MTU */
  STAT_IN_PAUSE_FRAMES = 21,  /* IEEE 802.3x */
  STAT_OUT_PAUSE_FRAMES = 22, /* IEEE 802.3x */
  STAT_OUT_JAMS = 23,         /* backpressure on a half-duplex port */
  STAT_IN_STORM_DISCARDS = 24,
  STAT_IN_VLAN_DISCARDS = 25,
  STAT_IN_STP_DISCARDS = 26,
  STAT_IN_MAC_LOCK_DISCARDS = 27,
  STAT_OUT_QUEUE_0 = 28, /* packets by egress queue */
  STAT_OUT_QUEUE_1 = 29,
  STAT_OUT_QUEUE_2 = 30,
  STAT_OUT_QUEUE_3 = 31,
  STAT_OUT_QUEUE_4 = 32,
  STAT_OUT_QUEUE_5 = 33,
  STAT_OUT_QUEUE_6 = 34,
  STAT_OUT_QUEUE_7 = 35,
  STAT_TYPE_COUNT = 36 /* how many there are; names no counter */
} stat_type_t;

/* One counter of a port's brief set. */
typedef enum brief_stat_type_t VORN_ENUM_BASE {
  BRIEF_STAT_IN_OCTETS = 0,
  BRIEF_STAT_IN_PACKETS = 1,
  BRIEF_STAT_IN_DISCARDS = 2,
  BRIEF_STAT_IN_ERRORS = 3,
  BRIEF_STAT_OUT_OCTETS = 4,
  BRIEF_STAT_OUT_PACKETS = 5,
  BRIEF_STAT_OUT_DISCARDS = 6,
  BRIEF_STAT_OUT_ERRORS = 7,
  BRIEF_STAT_TYPE_COUNT = 8 /* how many there are; names no counter */
} brief_stat_type_t;

/* ---- Other values ---------------------------------------------------------------------------- */

/* Values of Packet's type. */
enum {
  PACKET_TYPE_DATA = 0,   /* leaves only ports whose spanning-tree state lets data through */
  PACKET_TYPE_CONTROL = 1 /* leaves whatever the spanning-tree state: BPDU, LACP, LLDP */
};

/* The port kind code that goes with a MAC limit. */
enum {
  PORT_KIND_PHYSICAL = 1, /* the Mp is a hardware port */
  PORT_KIND_LAG = 2,      /* the Mp is module 0, port = LAG id */
  PORT_KIND_VLAN = 3,     /* the Mp is module 0, port = VLAN number */
  PORT_KIND_SYSTEM = 4    /* the whole switch; the Mp is module 0, port 0 */
};

#endif /* VORNLCAPI_ENUMS_H_ */
