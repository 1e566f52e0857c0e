// SPDX-License-Identifier: Apache-2.0
//
// How ports and switch treat traffic.

#include "vornlcapi/api/traffic.h"

#include "api/ports.h"

using namespace vorn::detail;

// ---- Storm control ------------------------------------------------------------------------------

bool vorn_get_port_unicast_control(const Usp& port, unsigned int& frames_per_second) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_unicast_control>(port, frames_per_second);
}

bool vorn_set_port_unicast_control(const Usp& port, unsigned int frames_per_second) {
  return on_members<TranslateLookup, &VornSdkBase::set_port_unicast_control>(port,
                                                                             frames_per_second);
}

bool vorn_get_port_multicast_control(const Usp& port, unsigned int& frames_per_second) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_multicast_control>(port,
                                                                            frames_per_second);
}

bool vorn_set_port_multicast_control(const Usp& port, unsigned int frames_per_second) {
  return on_members<TranslateLookup, &VornSdkBase::set_port_multicast_control>(port,
                                                                               frames_per_second);
}

bool vorn_get_port_broadcast_control(const Usp& port, unsigned int& frames_per_second) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_broadcast_control>(port,
                                                                            frames_per_second);
}

bool vorn_set_port_broadcast_control(const Usp& port, unsigned int frames_per_second) {
  return on_members<TranslateLookup, &VornSdkBase::set_port_broadcast_control>(port,
                                                                               frames_per_second);
}

// ---- Mirroring ----------------------------------------------------------------------------------

// Only the mirrored port goes in; the other one comes back as a hardware port, to be translated
// the other way.
bool vorn_get_port_mirror(Usp& mirror_to, const Usp& mirrored, mirror_type_t& type) {
  const Target from = LookupTranslate::find(mirrored);
  Mp to(0, 0);
  return from.sdk != nullptr && from.sdk->get_port_mirror(to, from.mp, type) &&
         vorn_mp_to_usp(to, mirror_to);
}

// Two ports, both translated ahead of the lookup.
bool vorn_set_port_mirror(const Usp& mirror_to, const Usp& mirrored, mirror_type_t type) {
  Mp to(0, 0);
  if (!vorn_usp_to_mp(mirror_to, to)) return false;
  const Target from = TranslateLookup::find(mirrored);
  return from.sdk != nullptr && from.sdk->set_port_mirror(to, from.mp, type);
}

// ---- Flood blocking -----------------------------------------------------------------------------

bool vorn_get_port_flood_blocking_cpu(const Usp& port, flood_block_type_t& type) {
  return on_port<LookupTranslate, &VornSdkBase::get_port_flood_blocking_cpu>(port, type);
}

bool vorn_set_port_flood_blocking_cpu(const std::list<Usp>& ports, flood_block_type_t type) {
  return on_ports<&VornSdkBase::set_port_flood_blocking_cpu>(ports, type);
}

// Two ports, both translated behind the lookup.
bool vorn_get_port_flood_blocking(const Usp& from, const Usp& to, flood_block_type_t& type) {
  const Target source = LookupTranslate::find(from);
  Mp destination(0, 0);
  return source.sdk != nullptr && vorn_usp_to_mp(to, destination) &&
         source.sdk->get_port_flood_blocking(source.mp, destination, type);
}

// A list of ports and one more port, which is translated between the lookup and the list.
bool vorn_set_port_flood_blocking(const std::list<Usp>& ports, const Usp& to,
                                  flood_block_type_t type) {
  const Target destination = LookupTranslate::find(to);
  std::list<Mp> sources;
  return destination.sdk != nullptr && vorn_usp_list_to_mp_list(ports, sources) &&
         each_of(sources, destination.sdk, [&](VornSdkBase& sdk, const Mp& source) {
           return sdk.set_port_flood_blocking(source, destination.mp, type);
         });
}

// ---- Unknown unicast to the CPU -----------------------------------------------------------------

bool vorn_get_port_switch_unknown_unicast_to_cpu(const Usp& port, bool& enabled) {
  return on_port<LookupTranslate, &VornSdkBase::get_port_switch_unknown_unicast_to_cpu>(port,
                                                                                        enabled);
}

bool vorn_set_port_switch_unknown_unicast_to_cpu(const Usp& port, bool enable) {
  return on_port<LookupTranslate, &VornSdkBase::set_port_switch_unknown_unicast_to_cpu>(port,
                                                                                        enable);
}

bool vorn_get_switch_unknown_unicast_to_cpu(bool& enabled) {
  return call<&VornSdkBase::get_switch_unknown_unicast_to_cpu>(enabled);
}

bool vorn_set_switch_unknown_unicast_to_cpu(bool enable) {
  return call<&VornSdkBase::set_switch_unknown_unicast_to_cpu>(enable);
}

// ---- Class of service ---------------------------------------------------------------------------

bool vorn_get_port_cos_mapping(const Usp& port, unsigned int priority, unsigned int& queue) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_cos_mapping>(port, priority, queue);
}

bool vorn_set_port_cos_mapping(const Usp& port, unsigned int priority, unsigned int queue) {
  return on_members<TranslateLookup, &VornSdkBase::set_port_cos_mapping>(port, priority, queue);
}

// ---- What a port lets in and out ----------------------------------------------------------------

bool vorn_get_port_ingress_discarding(const Usp& port, ingress_discard_type_t& type) {
  return on_port<LookupTranslate, &VornSdkBase::get_port_ingress_discarding>(port, type);
}

bool vorn_set_port_ingress_discarding(const Usp& port, ingress_discard_type_t type) {
  return on_port<LookupTranslate, &VornSdkBase::set_port_ingress_discarding>(port, type);
}

bool vorn_get_port_egress_admin_state(const Usp& port, bool& on) {
  return on_port<LookupTranslate, &VornSdkBase::get_port_egress_admin_state>(port, on);
}

bool vorn_set_port_egress_admin_state(const Usp& port, bool on) {
  return on_port<LookupTranslate, &VornSdkBase::set_port_egress_admin_state>(port, on);
}

bool vorn_set_port_l2_enable(const Usp& port, bool enable) {
  return on_port<LookupTranslate, &VornSdkBase::set_port_l2_enable>(port, enable);
}

// ---- Forward mode of the switch -----------------------------------------------------------------

bool vorn_get_switch_forward_mode(unsigned int& mode) {
  return call<&VornSdkBase::get_switch_forward_mode>(mode);
}

bool vorn_set_switch_forward_mode(unsigned int mode) {
  return call<&VornSdkBase::set_switch_forward_mode>(mode);
}
