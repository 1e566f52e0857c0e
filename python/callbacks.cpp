// SPDX-License-Identifier: Apache-2.0
#include "callbacks.h"

namespace vorn_python {

namespace {

using RxPackets = CallbackPool<RxPacket*, void*>;
using RxPacketsC = CallbackPool<ctype_rx_packet_s*, void*>;
using LinkChanges = CallbackPool<LinkStatus*, Usp*>;
using LinkChangesC = CallbackPool<ctype_link_status_s*, usp_s*>;
using MacUpdates = CallbackPool<L2Addr*, int, void*>;
using MacUpdatesC = CallbackPool<ctype_l2_addr_s*, int, void*>;

template <class Pool, class PoolC>
void* find_in(const Callback& callback) {
  if (const auto function = Pool::find(callback)) return reinterpret_cast<void*>(function);
  return reinterpret_cast<void*>(PoolC::find(callback));
}

}  // namespace

void* find_callback(lcmgr_report_event_t event, const Callback& callback) {
  switch (event) {
    case LCMGR_REPORT_RX_PACKET:
      return find_in<RxPackets, RxPacketsC>(callback);
    case LCMGR_REPORT_LINK_CHANGE:
      return find_in<LinkChanges, LinkChangesC>(callback);
    case LCMGR_REPORT_MAC_UPDATE:
      return find_in<MacUpdates, MacUpdatesC>(callback);
  }
  return nullptr;
}

void remove_callback(void* function) {
  RxPackets::remove(function);
  RxPacketsC::remove(function);
  LinkChanges::remove(function);
  LinkChangesC::remove(function);
  MacUpdates::remove(function);
  MacUpdatesC::remove(function);
}

void clear_callbacks() {
  RxPackets::clear();
  RxPacketsC::clear();
  LinkChanges::clear();
  LinkChangesC::clear();
  MacUpdates::clear();
  MacUpdatesC::clear();
}

}  // namespace vorn_python
