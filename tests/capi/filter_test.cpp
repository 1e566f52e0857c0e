// SPDX-License-Identifier: Apache-2.0
//
// Packet filters.
#include "vornlcapi/capi/filter.h"

#include "tests/capi/rows.h"

namespace vorn::test {
namespace {

const Row kRows[] = {
    {"add_arp_filter", call(ctype_vorn_add_arp_filter, 71, 72), "add_arp_filter(71,72)"},
    {"delete_arp_filter", call(ctype_vorn_delete_arp_filter, 71, 72), "delete_arp_filter(71,72)"},
    {"delete_arp_filter_all", call(ctype_vorn_delete_arp_filter_all), "delete_arp_filter_all()"},
    {"add_ip_protocol_filter", call(ctype_vorn_add_ip_protocol_filter, 89),
     "add_ip_protocol_filter(89)"},
    {"delete_ip_protocol_filter", call(ctype_vorn_delete_ip_protocol_filter, 89),
     "delete_ip_protocol_filter(89)"},
    {"delete_ip_protocol_filter_all", call(ctype_vorn_delete_ip_protocol_filter_all),
     "delete_ip_protocol_filter_all()"},
    {"add_l4_destination_port_filter", call(ctype_vorn_add_l4_destination_port_filter, 443),
     "delete_l4_destination_port_filter(443)"},
    {"delete_l4_destination_port_filter", call(ctype_vorn_delete_l4_destination_port_filter, 443),
     "delete_l4_destination_port_filter(443)"},
    {"delete_l4_destination_port_filter_all",
     call(ctype_vorn_delete_l4_destination_port_filter_all),
     "delete_l4_destination_port_filter_all()"},
};

INSTANTIATE_TEST_SUITE_P(filter, Rows, testing::ValuesIn(kRows), row_name);

}  // namespace
}  // namespace vorn::test
