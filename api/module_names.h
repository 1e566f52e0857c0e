// SPDX-License-Identifier: Apache-2.0
//
// The names of trace levels and of the switch system's modules.
//
// Exactly one source file of api/ (lifecycle.cpp) and one of capi/ includes this. Each of the two
// gets a copy of its own: the standard-stream initialiser of <iostream>, then the eighteen
// strings in this order, built when the library is loaded and destroyed in reverse order when it
// is unloaded. Most of them are part of the load sequence only.
#ifndef API_MODULE_NAMES_H_
#define API_MODULE_NAMES_H_

#include <iostream>
#include <string>

namespace vorn::detail {

const std::string kTraceLevelXrl("trace_level_xrl");
const std::string kTraceLevelApi("trace_level_api");
const std::string kTraceLevelSdk("trace_level_sdk");
const std::string kTraceLevelAll("trace_level_all");
const std::string kFinder("finder");
const std::string kCardManager("card_manager");
const std::string kLcmgr("lcmgr");
const std::string kFdb("fdb");
const std::string kVlan("vlan");
const std::string kSif("sif");
const std::string kSwitchMirror("switch_mirror");
const std::string kPolicy("policy");
const std::string kStat("stat");
const std::string kLldp("lldp");
const std::string kRstp("rstp");
const std::string kSnmp("snmp");
const std::string kLacp("lacp");
const std::string kTuntap("tuntap");

}  // namespace vorn::detail

#endif  // API_MODULE_NAMES_H_
