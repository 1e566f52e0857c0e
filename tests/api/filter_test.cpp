// SPDX-License-Identifier: Apache-2.0

#include "vornlcapi/api/filter.h"

#include "tests/api/rows.h"

namespace vorn::test {
namespace {

std::vector<Row> rows() {
  // clang-format off
  return {
      {"add_arp_filter", [] { return vorn_add_arp_filter(1001, 1002); },
       {111}, call("add_arp_filter(1001,1002)")},
      {"delete_arp_filter", [] { return vorn_delete_arp_filter(1003, 1004); },
       {112}, call("delete_arp_filter(1003,1004)")},
      {"delete_arp_filter_all", [] { return vorn_delete_arp_filter_all(); },
       {113}, call("delete_arp_filter_all()")},
      {"add_ip_protocol_filter", [] { return vorn_add_ip_protocol_filter(17); },
       {114}, call("add_ip_protocol_filter(17)")},
      {"delete_ip_protocol_filter", [] { return vorn_delete_ip_protocol_filter(6); },
       {115}, call("delete_ip_protocol_filter(6)")},
      {"delete_ip_protocol_filter_all", [] { return vorn_delete_ip_protocol_filter_all(); },
       {116}, call("delete_ip_protocol_filter_all()")},
      {"add_l4_destination_port_filter", [] { return vorn_add_l4_destination_port_filter(179); },
       {117}, call("add_l4_destination_port_filter(179)")},
      {"delete_l4_destination_port_filter",
       [] { return vorn_delete_l4_destination_port_filter(520); },
       {118}, call("delete_l4_destination_port_filter(520)")},
      {"delete_l4_destination_port_filter_all",
       [] { return vorn_delete_l4_destination_port_filter_all(); },
       {119}, call("delete_l4_destination_port_filter_all()")},
  };
  // clang-format on
}
INSTANTIATE_TEST_SUITE_P(Filter, EntryPoint, testing::ValuesIn(rows()), row_name);

}  // namespace
}  // namespace vorn::test
