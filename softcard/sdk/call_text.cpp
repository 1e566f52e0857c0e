// SPDX-License-Identifier: Apache-2.0

#include "softcard/sdk/call_text.h"

namespace softcard {
namespace {

std::string text_of(const Mp& mp) {
  return std::to_string(mp.module()) + ':' + std::to_string(mp.port());
}

}  // namespace

void CallText::add(const Mp& mp) { append(text_of(mp)); }

void CallText::add(const Usp& usp) {
  append(std::to_string(usp.unit()) + '/' + std::to_string(usp.slot()) + '/' +
         std::to_string(usp.port()));
}

void CallText::add(const std::list<Mp>& ports) {
  std::string all;
  for (const Mp& mp : ports) all += (all.empty() ? "" : " ") + text_of(mp);
  append('[' + all + ']');
}

void CallText::add(const Packet& packet) {
  add(packet.length());
  add(packet.type());
}

void CallText::add(const of_flow_mp_s& flow) { add(flow.match.flags); }

void CallText::add(const of_action_param_s& param) {
  add(param.word[0]);
  add(param.word[1]);
}

void CallText::append(const std::string& argument) {
  text_ += (first_ ? "" : ", ") + argument;
  first_ = false;
}

void CallText::add(const unsigned char* bitmap, vorn::operations::VlanBitmap) {
  std::string all;
  for (unsigned vlan = 0; vlan < 4096; ++vlan) {
    if ((bitmap[vlan / 8] >> vlan % 8 & 1) == 0) continue;
    all += (all.empty() ? "" : " ") + std::to_string(vlan);
  }
  append('{' + all + '}');
}

}  // namespace softcard
