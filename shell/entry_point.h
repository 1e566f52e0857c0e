// SPDX-License-Identifier: Apache-2.0
//
// Makes the command of an entry point from its row in entrypoints/: which words are read, how they
// are parsed and what is printed comes from the function's own type and the row's names.
//
// Callbacks have a name but take no word: the shell's own are installed, which print the event.
#ifndef SHELL_ENTRY_POINT_H_
#define SHELL_ENTRY_POINT_H_

#include <initializer_list>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "codec.h"
#include "entrypoints/binder.h"
#include "entrypoints/row.h"
#include "event_printer.h"

namespace shell {

using entrypoints::Binder;
using entrypoints::Bound;
using entrypoints::Role;

std::string usage_of(const std::vector<Word>& words);
// The words that a command takes.
std::vector<Word> words_of(const std::vector<Bound>& parameters);

// ---- Slots: one parameter of an entry point during a call ---------------------------------------

// Values, references to const (both read) and references (printed).
template <class P>
class Slot {
  using V = std::remove_cv_t<std::remove_reference_t<P>>;
  static constexpr bool kWritable =
      std::is_lvalue_reference_v<P> && !std::is_const_v<std::remove_reference_t<P>>;

 public:
  static Bound bind(Binder& binder) {
    if constexpr (std::is_integral_v<V>) {
      if (binder.count_due()) return binder.take_count();
    }
    Bound bound =
        binder.take(kWritable ? Binder::Direction::kOut : Binder::Direction::kIn,
                    std::is_same_v<V, std::list<Usp>>, std::is_same_v<V, bool> ? "flag" : nullptr);
    if constexpr (std::is_enum_v<V>) bound.parameter.names = &names_of<V>();
    return bound;
  }
  void read(const Bound& bound, Call& call) {
    if (bound.role == Role::kCount) {
      if constexpr (std::is_integral_v<V>) value_ = static_cast<V>(call.array_size);
    } else if (bound.role == Role::kIn) {
      if constexpr (!kWritable) {
        value_ = Codec<V>::read(bound.parameter, call);
        call.reply.inputs.emplace_back(bound.parameter.name,
                                       show_input(bound.parameter, call, value_));
      }
    }
  }
  P pass() { return value_; }
  void report(const Bound& bound, Call& call) {
    if (bound.role == Role::kCount) {
      if constexpr (kWritable && std::is_integral_v<V>) {
        call.report_array(static_cast<std::size_t>(value_));
      }
    } else if (bound.role == Role::kOut) {
      if constexpr (kWritable) {
        call.reply.outputs.emplace_back(bound.parameter.name,
                                        Codec<V>::show(bound.parameter, value_));
      }
    }
  }

 private:
  V value_ = Codec<V>::initial();
};

// Pointers to one value: read or printed, as the row says.
template <class V>
class Slot<V*> {
 public:
  static Bound bind(Binder& binder) {
    if constexpr (std::is_integral_v<V>) {
      if (binder.count_due()) return binder.take_count();
    }
    return binder.take(Binder::Direction::kEither, false);
  }
  void read(const Bound& bound, Call& call) {
    if (bound.role == Role::kCount) {
      if constexpr (std::is_integral_v<V>) value_ = static_cast<V>(call.array_size);
    } else if (bound.role == Role::kIn) {
      // 64-bit numbers are never read.
      if constexpr (!std::is_same_v<V, unsigned long long>) {
        value_ = Codec<V>::read(bound.parameter, call);
        call.reply.inputs.emplace_back(bound.parameter.name,
                                       show_input(bound.parameter, call, value_));
      }
    }
  }
  V* pass() { return &value_; }
  void report(const Bound& bound, Call& call) {
    if (bound.role == Role::kCount) {
      if constexpr (std::is_integral_v<V>) call.report_array(static_cast<std::size_t>(value_));
    } else if (bound.role == Role::kOut) {
      if constexpr (!std::is_same_v<V, ctype_of_flow_s>) {
        call.reply.outputs.emplace_back(bound.parameter.name,
                                        Codec<V>::show(bound.parameter, value_));
      }
    }
  }

 private:
  V value_ = Codec<V>::initial();
};

// Byte arrays: MAC and IPv6 addresses, masks, VLAN bitmaps.
class BytesSlot {
 public:
  static Bound bind(Binder& binder) { return binder.take(Binder::Direction::kEither, false); }
  void read(const Bound& bound, Call& call);
  void report(const Bound& bound, Call& call) const;

 protected:
  Bytes bytes_{};
};
template <>
class Slot<unsigned char*> : public BytesSlot {
 public:
  unsigned char* pass() { return bytes_.data(); }
};
template <>
class Slot<const unsigned char*> : public BytesSlot {
 public:
  const unsigned char* pass() { return bytes_.data(); }
};
template <>
class Slot<unsigned char (&)[6]> {
 public:
  static Bound bind(Binder& binder) { return binder.take(Binder::Direction::kOut, false); }
  void read(const Bound&, Call&) {}
  unsigned char (&pass())[6] { return bytes_; }
  void report(const Bound& bound, Call& call) const {
    call.reply.outputs.emplace_back(bound.parameter.name, text_value(mac_text(bytes_)));
  }

 private:
  unsigned char bytes_[6] = {};
};

// A port, or an array of ports with its count behind it.
template <>
class Slot<usp_s*> {
 public:
  static Bound bind(Binder& binder);
  void read(const Bound& bound, Call& call);
  usp_s* pass() { return ports_.data(); }
  void report(const Bound& bound, Call& call);

 private:
  std::vector<usp_s> ports_;
};

// All counters of a port, one output each.
template <class Counter>
void report_counter(const Counter& counter, Call& call) {
  call.reply.outputs.emplace_back(enum_value(counter.type).text,
                                  number_value(std::uint64_t{counter.value}));
}
template <class Counter>
class CounterListSlot {
 public:
  static Bound bind(Binder& binder) { return binder.take(Binder::Direction::kOut, true); }
  void read(const Bound&, Call&) {}
  std::list<Counter>& pass() { return counters_; }
  void report(const Bound&, Call& call) const {
    for (const Counter& counter : counters_) report_counter(counter, call);
  }

 private:
  std::list<Counter> counters_;
};
template <>
class Slot<std::list<StatCounter32>&> : public CounterListSlot<StatCounter32> {};
template <>
class Slot<std::list<StatCounter64>&> : public CounterListSlot<StatCounter64> {};

// A list that comes by value: what is put into it reaches nobody.
template <class Counter>
class Slot<std::list<Counter>> {
 public:
  static Bound bind(Binder& binder) {
    Bound bound = binder.take(Binder::Direction::kOut, true);
    bound.role = Role::kHidden;
    return bound;
  }
  void read(const Bound&, Call&) {}
  std::list<Counter> pass() { return {}; }
  void report(const Bound&, Call&) const {}
};

// An array of counters with its room behind it.
template <class Counter>
class CounterArraySlot {
 public:
  static Bound bind(Binder& binder) {
    Bound bound = binder.take(Binder::Direction::kOut, true);
    binder.expect_count();
    return bound;
  }
  void read(const Bound&, Call& call) {
    counters_.resize(STAT_TYPE_COUNT);
    call.array_size = counters_.size();
  }
  Counter* pass() { return counters_.data(); }
  void report(const Bound&, Call& call) {
    call.report_array = [this, &call](std::size_t count) {
      for (std::size_t i = 0; i < count && i < counters_.size(); ++i) {
        report_counter(counters_[i], call);
      }
    };
  }

 private:
  std::vector<Counter> counters_;
};
template <>
class Slot<StatCounter32*> : public CounterArraySlot<StatCounter32> {};
template <>
class Slot<StatCounter64*> : public CounterArraySlot<StatCounter64> {};

// A packet as C passes it.
template <>
class Slot<ctype_packet_s*> {
 public:
  static Bound bind(Binder& binder) { return binder.take(Binder::Direction::kIn, false); }
  void read(const Bound& bound, Call& call);
  ctype_packet_s* pass() { return &record_; }
  void report(const Bound&, Call&) const {}

 private:
  std::vector<unsigned char> bytes_;
  ctype_packet_s record_{};
};

// The meaning of a void*, by its kind: a callback by its name, the argument of the walk through
// the MAC table, a buffer that is not used, else user data as a number.
template <>
class Slot<void*> {
 public:
  static Bound bind(Binder& binder);
  void read(const Bound& bound, Call& call);
  void* pass() { return pointer_; }
  void report(const Bound& bound, Call& call);

 private:
  void* pointer_ = nullptr;
  mac_traverse_s walk_{};
  std::vector<ctype_l2_addr_s> entries_;
};

// A callback: the shell's own.
template <class... A>
class Slot<void (*)(A...)> {
 public:
  static Bound bind(Binder& binder) {
    Bound bound = binder.take(Binder::Direction::kIn, false);
    bound.role = Role::kHidden;
    return bound;
  }
  void read(const Bound&, Call&) {}
  void (*pass())(A...) { return &EventPrinter<A...>::print; }
  void report(const Bound&, Call&) const {}
};

// ---- Rows ---------------------------------------------------------------------------------------

// Reads the words, calls the entry point and puts result and outputs into `reply`.
template <class R, class... P, std::size_t... I>
void call_entry(R (*function)(P...), const std::vector<Bound>& bound, Arguments& arguments,
                Reply& reply, std::index_sequence<I...>) {
  [[maybe_unused]] Call call{arguments, reply, {}, 0, {}};
  std::tuple<Slot<P>...> slots;
  (std::get<I>(slots).read(bound[I], call), ...);
  arguments.finish();
  reply.result = function(std::get<I>(slots).pass()...) != 0;
  [[maybe_unused]] const auto report = [&](auto& slot, const Bound& parameter) {
    if (*reply.result || parameter.parameter.always) slot.report(parameter, call);
  };
  (report(std::get<I>(slots), bound[I]), ...);
}

// Binds the names of a row to a function and makes its command. `row` learns the kinds that the
// function's types give.
template <class R, class... P>
Command make_entry(const char* name, R (*function)(P...), std::vector<Parameter>& row,
                   const char* group, const char* help) {
  Binder binder(row);
  const std::vector<Bound> bound{Slot<P>::bind(binder)...};
  binder.finish();
  Command command;
  command.name = name;
  command.group = group;
  command.words = words_of(bound);
  command.usage = usage_of(command.words);
  command.help = help;
  command.entry_point = reinterpret_cast<void (*)()>(function);
  command.run = [function, bound](Shell&, Arguments& arguments, Reply& reply) {
    call_entry(function, bound, arguments, reply, std::index_sequence_for<P...>());
  };
  return command;
}

// The rows of one family.
class Family {
 public:
  Family(CommandTable& table, const char* group) : table_(table), group_(group) {}

  // An entry point that only one of the bindings has.
  template <class R, class... P>
  void add(const char* name, R (*function)(P...), std::initializer_list<const char*> names,
           const char* help) {
    std::vector<Parameter> row = entrypoints::parse_row(names);
    table_.add(make_entry(name, function, row, group_, help));
  }

  // An entry point and its twin in the C binding.
  template <class R, class... P, class CR, class... CP>
  void add(const char* name, R (*function)(P...), const char* c_name, CR (*c_function)(CP...),
           std::initializer_list<const char*> names, const char* help) {
    std::vector<Parameter> row = entrypoints::parse_row(names);
    table_.add(make_entry(name, function, row, group_, help));
    table_.add(make_entry(c_name, c_function, row, group_, help));
  }

 private:
  CommandTable& table_;
  const char* group_;
};

}  // namespace shell

#endif  // SHELL_ENTRY_POINT_H_
