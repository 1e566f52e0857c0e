// SPDX-License-Identifier: Apache-2.0
//
// Port statistics. The 32-bit forms give the low half of a counter.

#include "softcard/sdk/sdk.h"

namespace softcard {
namespace {

// Counter number `index` of a port's full set, as a record of either width.
template <class Record>
Record full_record(const Counters& counters, PortIndex port, unsigned index) {
  const auto type = static_cast<stat_type_t>(index);
  return {type, static_cast<decltype(Record::value)>(counters.value(port, type))};
}

// Fills as much of the full set as the array has room for.
template <class Record>
void fill(const Counters& counters, PortIndex port, Record* records, unsigned& count) {
  count = std::min<unsigned>(count, STAT_TYPE_COUNT);
  for (unsigned i = 0; i < count; ++i) records[i] = full_record<Record>(counters, port, i);
}

template <class Record>
void append(const Counters& counters, PortIndex port, std::list<Record>& records) {
  std::list<Record> all;
  for (unsigned i = 0; i < STAT_TYPE_COUNT; ++i) {
    all.push_back(full_record<Record>(counters, port, i));
  }
  records.splice(records.end(), all);
}

}  // namespace

bool SoftSdk::set_port_stat_enable(const Mp& mp, bool on) {
  return on_port(mp, [&](PortIndex port) { tables_.counters.set_enabled(port, on); });
}

bool SoftSdk::get_port_stat_enabled(const Mp& mp, bool& on) {
  return on_port(mp, [&](PortIndex port) { on = tables_.counters.enabled(port); });
}

bool SoftSdk::get_port_stat_counter(const Mp& mp, stat_type_t type, unsigned long long& value) {
  return in_range("counter", unsigned{type}, 0, STAT_TYPE_COUNT - 1) &&
         on_port(mp, [&](PortIndex port) { value = tables_.counters.value(port, type); });
}

bool SoftSdk::get_port_stat_counter32(const Mp& mp, stat_type_t type, unsigned int& value) {
  unsigned long long wide = 0;
  if (!get_port_stat_counter(mp, type, wide)) return false;
  value = static_cast<unsigned>(wide);
  return true;
}

bool SoftSdk::get_port_stat_counter_all64(const Mp& mp, std::list<StatCounter64>& counters) {
  return on_port(mp, [&](PortIndex port) { append(tables_.counters, port, counters); });
}

bool SoftSdk::get_port_stat_counter_all32(const Mp& mp, std::list<StatCounter32>& counters) {
  return on_port(mp, [&](PortIndex port) { append(tables_.counters, port, counters); });
}

bool SoftSdk::get_port_stat_counter_all64_ext(const Mp& mp, StatCounter64* counters,
                                              unsigned int& count) {
  return on_port(mp, [&](PortIndex port) { fill(tables_.counters, port, counters, count); });
}

bool SoftSdk::get_port_stat_counter_all32_ext(const Mp& mp, StatCounter32* counters,
                                              unsigned int& count) {
  return on_port(mp, [&](PortIndex port) { fill(tables_.counters, port, counters, count); });
}

bool SoftSdk::get_port_brief_stat_counter64(const Mp& mp, brief_stat_type_t type,
                                            unsigned long long& value) {
  return in_range("brief counter", unsigned{type}, 0, BRIEF_STAT_TYPE_COUNT - 1) &&
         on_port(mp, [&](PortIndex port) { value = tables_.counters.brief(port, type); });
}

bool SoftSdk::get_port_brief_stat_counter32(const Mp& mp, brief_stat_type_t type,
                                            unsigned int& value) {
  unsigned long long wide = 0;
  if (!get_port_brief_stat_counter64(mp, type, wide)) return false;
  value = static_cast<unsigned>(wide);
  return true;
}

bool SoftSdk::get_port_brief_stat_counter_all64(const Mp& mp,
                                                std::list<BriefStatCounter64>& counters) {
  return on_port(mp, [&](PortIndex port) {
    std::list<BriefStatCounter64> all;
    for (unsigned i = 0; i < BRIEF_STAT_TYPE_COUNT; ++i) {
      const auto type = static_cast<brief_stat_type_t>(i);
      all.push_back({type, tables_.counters.brief(port, type)});
    }
    counters.splice(counters.end(), all);
  });
}

bool SoftSdk::clear_port_stat_counter(const Mp& mp) {
  return on_port(mp, [&](PortIndex port) { tables_.counters.clear(port); });
}

}  // namespace softcard
