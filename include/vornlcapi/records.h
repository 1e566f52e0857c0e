/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The C records of the line card interface, for C99 and for C++11 and later: what C callers pass
 * in, and what C callbacks receive. types.h has their C++ twins.
 *
 * Byte arrays are in network order (the first byte on the wire first). Numbers, IPv4 addresses
 * and masks among them, are in the processor's own order: 192.0.2.1 is 0xc0000201.
 */
#ifndef VORNLCAPI_RECORDS_H_
#define VORNLCAPI_RECORDS_H_

#include "vornlcapi/enums.h"

/* A logical port: a physical port, a LAG interface or a VLAN interface. 12 bytes. Arrays of
 * ports are contiguous. */
typedef struct usp_s {
  unsigned int unit;
  unsigned int slot;
  unsigned int port;
} usp_s;

/* A frame to send from the CPU. `data` is the caller's and is only read. */
typedef struct ctype_packet_s {
  unsigned int length; /* bytes at `data`; 0: there is nothing to send */
  unsigned int type;   /* PACKET_TYPE_... */
  unsigned char* data; /* the frame from its destination address on, without checksum */
} ctype_packet_s;

/* ---- Flow table ------------------------------------------------------------------------------ */

/* Bits of the flag word of a flow: which fields are part of the match. A field whose bit is
 * clear matches anything. */
enum {
  OF_MATCH_IN_PORT = 0x0001,
  OF_MATCH_SRC_MAC = 0x0002,
  OF_MATCH_DST_MAC = 0x0004,
  OF_MATCH_VLAN_ID = 0x0008,
  OF_MATCH_VLAN_PRIORITY = 0x0010,
  OF_MATCH_ETHER_TYPE = 0x0020,
  OF_MATCH_SRC_IP = 0x0040,
  OF_MATCH_DST_IP = 0x0080,
  OF_MATCH_SRC_L4_PORT = 0x0100,
  OF_MATCH_DST_L4_PORT = 0x0200,
  OF_MATCH_IP_PROTOCOL = 0x0400,
  OF_MATCH_TOS = 0x0800,
  OF_MATCH_ALL = 0x0fff
};

/* A flow-table entry. 60 bytes; the 48 bytes behind `in_port` are the match block. Fields whose
 * OF_MATCH_... bit is clear in `flags` are not looked at. */
typedef struct ctype_of_flow_s {
  usp_s in_port;                /* ingress port */
  unsigned char src_mac[6];     /* Ethernet source address */
  unsigned char dst_mac[6];     /* Ethernet destination address */
  unsigned short vlan_id;       /* the frame's VLAN, 1 to 4094 */
  unsigned short vlan_priority; /* 802.1p priority, 0 to 7 */
  unsigned short ether_type;    /* behind any VLAN tags; below 1536 for 802.3 frames */
  /* two bytes of alignment, never read */
  unsigned int src_ip;        /* IPv4 source, or the sender address of an ARP packet */
  unsigned int dst_ip;        /* IPv4 destination, or the target address of an ARP packet */
  unsigned int src_ip_mask;   /* bits of src_ip that count; any mask is valid */
  unsigned int dst_ip_mask;   /* bits of dst_ip that count; any mask is valid */
  unsigned short src_l4_port; /* TCP or UDP source port; ICMP type */
  unsigned short dst_l4_port; /* TCP or UDP destination port; ICMP code */
  unsigned short ip_protocol; /* IPv4 protocol or IPv6 next header; ARP operation */
  unsigned short tos;         /* IPv4 TOS or IPv6 traffic class byte */
  unsigned int flags;         /* OF_MATCH_... bits */
} ctype_of_flow_s;

/* Where the offset of a user-defined qualifier counts from. */
enum {
  OF_UDF_NONE = 0,  /* there is no qualifier; the other words are not looked at */
  OF_UDF_FRAME = 1, /* the first byte of the frame */
  OF_UDF_L3 = 2,    /* the first byte of the IPv4, IPv6 or ARP header */
  OF_UDF_L4 = 3     /* the first byte of the TCP, UDP or ICMP header */
};

/* A user-defined qualifier: one more condition of a flow, on any four bytes of the frame. */
typedef struct ctype_of_flow_qualify_udf_s {
  unsigned int base;   /* OF_UDF_... */
  unsigned int offset; /* bytes from there; a frame that ends earlier does not match */
  unsigned int value;  /* the four bytes as a number, first byte highest */
  unsigned int mask;   /* bits of it that count */
} ctype_of_flow_qualify_udf_s;

/* The code of a flow action: the values of of_action_t. */
typedef enum ctype_of_action_t VORN_ENUM_BASE {
  CTYPE_OF_ACTION_OUTPUT = 0,
  CTYPE_OF_ACTION_SET_VLAN_ID = 1,
  CTYPE_OF_ACTION_SET_VLAN_PRIORITY = 2,
  CTYPE_OF_ACTION_STRIP_VLAN = 3,
  CTYPE_OF_ACTION_SET_SRC_MAC = 4,
  CTYPE_OF_ACTION_SET_DST_MAC = 5,
  CTYPE_OF_ACTION_SET_SRC_IP = 6,
  CTYPE_OF_ACTION_SET_DST_IP = 7,
  CTYPE_OF_ACTION_SET_TOS = 8,
  CTYPE_OF_ACTION_SET_SRC_L4_PORT = 9,
  CTYPE_OF_ACTION_SET_DST_L4_PORT = 10,
  CTYPE_OF_ACTION_SET_QUEUE = 11
} ctype_of_action_t;

/* The parameter of a flow action.
 *
 *   action              word 0                         word 1
 *   OUTPUT              flow port number, OF_PORT_...
 *   SET_VLAN_ID         VLAN, 1 to 4094
 *   SET_VLAN_PRIORITY   802.1p priority, 0 to 7
 *   STRIP_VLAN
 *   SET_SRC/DST_MAC     bytes 0 to 3 of the address,   bytes 4 and 5, first byte highest
 *                       first byte highest
 *   SET_SRC/DST_IP      IPv4 address
 *   SET_TOS             TOS byte
 *   SET_SRC/DST_L4_PORT TCP or UDP port
 *   SET_QUEUE           egress queue, 0 to 7
 *
 * Words that the action does not name are 0. */
typedef struct ctype_of_action_param_s {
  unsigned int word[3];
} ctype_of_action_param_s;

/* ---- Callbacks ------------------------------------------------------------------------------- */
/* These records and what they point at belong to the SDK and are valid during the call only. */

/* A packet received for the CPU. */
typedef struct ctype_rx_packet_s {
  unsigned int length;       /* bytes at `data` */
  unsigned int reason;       /* RX_REASON_... */
  usp_s port;                /* the physical port that it came in through */
  unsigned int vlan;         /* the VLAN that it was put into; 0 when it was in none yet */
  unsigned int priority;     /* 802.1p priority, 0 to 7 */
  const unsigned char* data; /* the frame as it came in, its VLAN tag included */
} ctype_rx_packet_s;

/* The new state of a link that came up or went down, or changed its speed or duplex mode. */
typedef struct ctype_link_status_s {
  phy_state_t state;
  speed_type_t speed; /* SPEED_TYPE_UNKNOWN while the link is down */
  duplex_type_t duplex;
} ctype_link_status_s;

/* Bits of the flag word of a MAC table entry. */
enum {
  L2_ADDR_STATIC = 1, /* set by the client; does not age */
  L2_ADDR_SYSTEM = 2  /* leads to the CPU; does not age, belongs to no port */
};

/* An entry of the MAC table. */
typedef struct ctype_l2_addr_s {
  unsigned char mac[6];
  unsigned int vlan;
  usp_s port;         /* physical port or LAG interface; 0/0/0 for a system entry */
  unsigned int flags; /* L2_ADDR_... bits; 0 for a learned entry */
} ctype_l2_addr_s;

/* What the argument of vorn_traverse_mac_table points at. */
typedef struct mac_traverse_s {
  /* Called once for every entry of the MAC table; not null. Returns non-zero to go on, 0 to end
   * the walk. It must not change the MAC table. */
  int (*visit)(const ctype_l2_addr_s* entry, void* user_data);
  void* user_data; /* handed to `visit` as it is */
} mac_traverse_s;

#endif /* VORNLCAPI_RECORDS_H_ */
