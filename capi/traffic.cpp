// SPDX-License-Identifier: Apache-2.0
//
// How ports and switch treat traffic. capi.h has the conventions.
#include "vornlcapi/capi/traffic.h"

#include "capi/conversions.h"
#include "vornlcapi/api/traffic.h"

using namespace vorn::detail;

// ---- Storm control ------------------------------------------------------------------------------

int ctype_vorn_get_port_unicast_control(usp_s* port, unsigned int* frames_per_second) {
  return fetch<vorn_get_port_unicast_control>(to_usp(port), out(frames_per_second));
}

int ctype_vorn_set_port_unicast_control(usp_s* port, unsigned int frames_per_second) {
  return vorn_set_port_unicast_control(to_usp(port), frames_per_second);
}

int ctype_vorn_get_port_multicast_control(usp_s* port, unsigned int* frames_per_second) {
  return fetch<vorn_get_port_multicast_control>(to_usp(port), out(frames_per_second));
}

int ctype_vorn_set_port_multicast_control(usp_s* port, unsigned int frames_per_second) {
  return vorn_set_port_multicast_control(to_usp(port), frames_per_second);
}

// Its result after success is left open; it is 1, as for the others.
int ctype_vorn_get_port_broadcast_control(usp_s* port, unsigned int* frames_per_second) {
  return fetch<vorn_get_port_broadcast_control>(to_usp(port), out(frames_per_second));
}

int ctype_vorn_set_port_broadcast_control(usp_s* port, unsigned int frames_per_second) {
  return vorn_set_port_broadcast_control(to_usp(port), frames_per_second);
}

// ---- Mirroring ----------------------------------------------------------------------------------

int ctype_vorn_get_port_mirror(usp_s* mirror_to, usp_s* mirrored, mirror_type_t* type) {
  // Written out since the second output is stored first.
  Usp to(0, 0, 0);
  mirror_type_t kind{};
  if (!vorn_get_port_mirror(to, to_usp(mirrored), kind)) return 0;
  *type = kind;
  store(to, mirror_to);
  return 1;
}

int ctype_vorn_set_port_mirror(usp_s* mirror_to, usp_s* mirrored, mirror_type_t type) {
  return vorn_set_port_mirror(to_usp(mirror_to), to_usp(mirrored), type);
}

// ---- Flood blocking -----------------------------------------------------------------------------

int ctype_vorn_get_port_flood_blocking_cpu(usp_s* port, flood_block_type_t* type) {
  return fetch<vorn_get_port_flood_blocking_cpu>(to_usp(port), out(type));
}

int ctype_vorn_set_port_flood_blocking_cpu(usp_s* ports, int count, flood_block_type_t type) {
  return vorn_set_port_flood_blocking_cpu(to_list(ports, count), type);
}

int ctype_vorn_get_port_flood_blocking(usp_s* from, usp_s* to, flood_block_type_t* type) {
  return fetch<vorn_get_port_flood_blocking>(to_usp(from), to_usp(to), out(type));
}

int ctype_vorn_set_port_flood_blocking(usp_s* ports, int count, usp_s* to,
                                       flood_block_type_t type) {
  const std::list<Usp> from = to_list(ports, count);  // before the single port
  return vorn_set_port_flood_blocking(from, to_usp(to), type);
}

// ---- Unknown unicast to the CPU -----------------------------------------------------------------

int ctype_vorn_get_port_switch_unknown_unicast_to_cpu(usp_s* port, bool* on) {
  return fetch<vorn_get_port_switch_unknown_unicast_to_cpu>(to_usp(port), out(on));
}

int ctype_vorn_set_port_switch_unknown_unicast_to_cpu(usp_s* port, int on) {
  return vorn_set_port_switch_unknown_unicast_to_cpu(to_usp(port), to_flag(on));
}

int ctype_vorn_get_switch_unknown_unicast_to_cpu(bool* on) {
  return fetch<vorn_get_switch_unknown_unicast_to_cpu>(out(on));
}

int ctype_vorn_set_switch_unknown_unicast_to_cpu(int on) {
  return vorn_set_switch_unknown_unicast_to_cpu(to_flag(on));
}

// ---- Class of service ---------------------------------------------------------------------------

int ctype_vorn_get_port_cos_mapping(usp_s* port, unsigned int priority, unsigned int* queue) {
  return fetch<vorn_get_port_cos_mapping>(to_usp(port), priority, out(queue));
}

int ctype_vorn_set_port_cos_mapping(usp_s* port, unsigned int priority, unsigned int queue) {
  return vorn_set_port_cos_mapping(to_usp(port), priority, queue);
}

// ---- What a physical port lets in and out -------------------------------------------------------

int ctype_vorn_get_port_ingress_discarding(usp_s* port, ingress_discard_type_t* type) {
  return fetch<vorn_get_port_ingress_discarding>(to_usp(port), out(type));
}

int ctype_vorn_set_port_ingress_discarding(usp_s* port, ingress_discard_type_t type) {
  return vorn_set_port_ingress_discarding(to_usp(port), type);
}

int ctype_vorn_get_port_egress_admin_state(usp_s* port, bool* on) {
  return fetch<vorn_get_port_egress_admin_state>(to_usp(port), out(on));
}

int ctype_vorn_set_port_egress_admin_state(usp_s* port, int on) {
  return vorn_set_port_egress_admin_state(to_usp(port), to_flag(on));
}

int ctype_vorn_set_port_l2_enable(usp_s* port, int on) {
  return vorn_set_port_l2_enable(to_usp(port), to_flag(on));
}

// ---- Forward mode of the switch -----------------------------------------------------------------

int ctype_vorn_get_switch_forward_mode(unsigned int* mode) {
  return fetch<vorn_get_switch_forward_mode>(out(mode));
}

int ctype_vorn_set_switch_forward_mode(unsigned int mode) {
  return vorn_set_switch_forward_mode(mode);
}
