// SPDX-License-Identifier: Apache-2.0
//
// Makes the Python function of an entry point from its row in entrypoints/: which arguments it
// takes, how they are read and what is returned comes from the C++ function's own type and the
// row's names. Only the C++ binding is taken; it has everything that the C binding has.
#ifndef PYTHON_ENTRY_POINT_H_
#define PYTHON_ENTRY_POINT_H_

#include <pybind11/cast.h>

#include <array>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "callbacks.h"
#include "entrypoints/binder.h"
#include "entrypoints/row.h"
#include "values.h"

namespace vorn_python {

using entrypoints::Binder;
using entrypoints::Bound;
using entrypoints::Role;

constexpr std::size_t kMostInputs = 8;
constexpr std::size_t kMostOutputs = 4;

// One call while its arguments are read and its outputs are made.
struct Call {
  // The next argument; null when it was left out, which only optional ones may be.
  py::handle take() { return inputs[next_input++]; }
  void give(py::object output) { outputs[output_count++] = std::move(output); }

  std::array<PyObject*, kMostInputs> inputs{};
  std::size_t next_input = 0;
  std::array<py::object, kMostOutputs> outputs;
  std::size_t output_count = 0;
  of_action_t action = OF_ACTION_OUTPUT;                // read last
  lcmgr_report_event_t event = LCMGR_REPORT_RX_PACKET;  // read last
  std::size_t array_size = 0;                           // of the array read last
  Callback callback;                                    // to register or to withdraw
};

// ---- Slots: one parameter of an entry point during a call ---------------------------------------
//
//   bind()       takes its name, or the count's or none, from the row
//   hint()       its type in Python
//   read()       the argument, or room for the result
//   pass()       what the entry point is given; every slot has read by then
//   report()     gives the result
//   conclude()   the call is over, and whether it succeeded

// Values, references to const (both given) and references (returned).
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
    return binder.take(kWritable ? Binder::Direction::kOut : Binder::Direction::kIn,
                       std::is_same_v<V, std::list<Usp>>);
  }
  static std::string hint(const Bound& bound) {
    return Codec<V>::hint(bound.parameter, bound.role == Role::kOut);
  }
  void read(const Bound& bound, Call& call) {
    if constexpr (kWritable) {
      if constexpr (std::is_integral_v<V>) {
        if (bound.role == Role::kCount) value_ = static_cast<V>(call.array_size);
      }
    } else {
      const py::handle given = call.take();
      if (given) value_ = Codec<V>::read(bound.parameter, given);
      if constexpr (std::is_same_v<V, of_action_t>) call.action = value_;
      if constexpr (std::is_same_v<V, lcmgr_report_event_t>) call.event = value_;
    }
  }
  P pass(Call&) { return value_; }
  void report(const Bound& bound, Call& call) {
    if constexpr (kWritable) {
      if (bound.role == Role::kOut) call.give(Codec<V>::show(bound.parameter, value_));
    }
  }
  void conclude(Call&, bool) {}
  // A count: how much of the array was filled.
  std::size_t count() const {
    if constexpr (std::is_integral_v<V>) return static_cast<std::size_t>(value_);
    return 0;
  }

 private:
  V value_ = Codec<V>::initial();
};

// What the words of an action's parameter mean depends on the action in front of it.
template <>
class Slot<of_action_param_s> {
 public:
  static Bound bind(Binder& binder) {
    Bound bound = binder.take(Binder::Direction::kIn, false);
    bound.parameter.optional = true;  // some actions have none
    return bound;
  }
  static std::string hint(const Bound&) { return "PortLike | MacLike | Ip4Like | FlowPort | None"; }
  void read(const Bound& bound, Call& call) {
    param_ = read_action_param(bound.parameter, call.action, call.take());
  }
  of_action_param_s pass(Call&) { return param_; }
  void report(const Bound&, Call&) {}
  void conclude(Call&, bool) {}

 private:
  of_action_param_s param_{};
};

// Byte arrays: MAC and IPv6 addresses, masks, VLAN bitmaps.
class BytesSlot {
 public:
  static Bound bind(Binder& binder) { return binder.take(Binder::Direction::kEither, false); }
  static std::string hint(const Bound& bound) {
    return Codec<Bytes>::hint(bound.parameter, bound.role == Role::kOut);
  }
  void read(const Bound& bound, Call& call) {
    if (bound.role == Role::kIn) bytes_ = Codec<Bytes>::read(bound.parameter, call.take());
  }
  void report(const Bound& bound, Call& call) const {
    if (bound.role == Role::kOut) call.give(Codec<Bytes>::show(bound.parameter, bytes_));
  }
  void conclude(Call&, bool) {}

 protected:
  Bytes bytes_{};
};
template <>
class Slot<unsigned char*> : public BytesSlot {
 public:
  unsigned char* pass(Call&) { return bytes_.data(); }
};
template <>
class Slot<const unsigned char*> : public BytesSlot {
 public:
  const unsigned char* pass(Call&) { return bytes_.data(); }
};
template <>
class Slot<unsigned char (&)[6]> {
 public:
  static Bound bind(Binder& binder) { return binder.take(Binder::Direction::kOut, false); }
  static std::string hint(const Bound&) { return "str"; }
  void read(const Bound&, Call&) {}
  unsigned char (&pass(Call&))[6] { return bytes_; }
  void report(const Bound&, Call& call) const { call.give(show_mac(bytes_)); }
  void conclude(Call&, bool) {}

 private:
  unsigned char bytes_[6] = {};
};

// All counters of a port: a dictionary.
template <class Counter>
using CounterType = decltype(Counter::type);

template <class Counter>
void show_counter(py::dict& counters, const Counter& counter) {
  counters[enum_class<CounterType<Counter>>().show(counter.type)] = py::int_(counter.value);
}
template <class Counter>
std::string counters_hint() {
  return std::string("dict[") + enum_name<CounterType<Counter>>() + " | int, int]";
}

template <class Counter>
class Slot<std::list<Counter>&> {
 public:
  static Bound bind(Binder& binder) { return binder.take(Binder::Direction::kOut, true); }
  static std::string hint(const Bound&) { return counters_hint<Counter>(); }
  void read(const Bound&, Call&) {}
  std::list<Counter>& pass(Call&) { return counters_; }
  void report(const Bound&, Call& call) const {
    py::dict shown;
    for (const Counter& counter : counters_) show_counter(shown, counter);
    call.give(shown);
  }
  void conclude(Call&, bool) {}

 private:
  std::list<Counter> counters_;
};
template <>
class Slot<std::list<Usp>&> {
 public:
  static Bound bind(Binder& binder) { return binder.take(Binder::Direction::kOut, true); }
  static std::string hint(const Bound&) { return "list[Port]"; }
  void read(const Bound&, Call&) {}
  std::list<Usp>& pass(Call&) { return ports_; }
  void report(const Bound&, Call& call) const { call.give(show_ports(ports_)); }
  void conclude(Call&, bool) {}

 private:
  std::list<Usp> ports_;
};

// A list that comes by value: what is put into it reaches nobody.
template <class Counter>
class Slot<std::list<Counter>> {
 public:
  static Bound bind(Binder& binder) {
    Bound bound = binder.take(Binder::Direction::kOut, true);
    bound.role = Role::kHidden;
    return bound;
  }
  static std::string hint(const Bound&) { return {}; }
  void read(const Bound&, Call&) {}
  std::list<Counter> pass(Call&) { return {}; }
  void report(const Bound&, Call&) {}
  void conclude(Call&, bool) {}
};

// An array of counters with its room behind it, which says afterwards how many there are.
template <class Counter>
class CounterArraySlot {
 public:
  static Bound bind(Binder& binder) {
    Bound bound = binder.take(Binder::Direction::kOut, true);
    binder.expect_count();
    return bound;
  }
  static std::string hint(const Bound&) { return counters_hint<Counter>(); }
  void read(const Bound&, Call& call) {
    counters_.resize(STAT_TYPE_COUNT);
    call.array_size = counters_.size();
  }
  Counter* pass(Call&) { return counters_.data(); }
  void report(const Bound&, Call& call) const {
    py::dict shown;
    for (std::size_t i = 0; i < call.array_size && i < counters_.size(); ++i) {
      show_counter(shown, counters_[i]);
    }
    call.give(shown);
  }
  void conclude(Call&, bool) {}

 private:
  std::vector<Counter> counters_;
};
template <>
class Slot<StatCounter32*> : public CounterArraySlot<StatCounter32> {};
template <>
class Slot<StatCounter64*> : public CounterArraySlot<StatCounter64> {};

// What stands behind a void*, by its name: the walk through the MAC table, a callback to withdraw,
// or user data, which Python's callbacks are given without the library.
template <>
class Slot<void*> {
 public:
  static Bound bind(Binder& binder) { return binder.take(Binder::Direction::kEither, false); }
  static std::string hint(const Bound& bound);
  void read(const Bound& bound, Call& call);
  void* pass(Call& call);
  void report(const Bound& bound, Call& call) const;
  void conclude(Call& call, bool success);

 private:
  enum class Use { kUserData, kCallback, kWalk };
  static Use use_of(const Bound& bound);

  Use use_ = Use::kUserData;
  void* function_ = nullptr;
  mac_traverse_s walk_{};
  std::vector<ctype_l2_addr_s> entries_;
};

// A callback: the C function that calls the Python function.
template <class... A>
class Slot<void (*)(A...)> {
  using Pool = CallbackPool<A...>;

 public:
  static Bound bind(Binder& binder) { return binder.take(Binder::Direction::kIn, false); }
  static std::string hint(const Bound&) { return "Callable[..., Any]"; }
  void read(const Bound& bound, Call& call);
  void (*pass(Call& call))(A...) {
    // One that is registered already is passed again: whether it may be is for the card to say.
    const auto registered = Pool::find(call.callback);
    if (registered != nullptr) return registered;
    added_ = Pool::add(call.callback);
    return added_;
  }
  void report(const Bound&, Call&) {}
  void conclude(Call&, bool success) {
    if (added_ != nullptr && !success) Pool::remove(reinterpret_cast<void*>(added_));
  }

 private:
  typename Pool::Function added_ = nullptr;
};

// Reads a function for Call::callback.
void read_callback(const Bound& bound, Call& call);
template <class... A>
void Slot<void (*)(A...)>::read(const Bound& bound, Call& call) {
  read_callback(bound, call);
}

// ---- Functions ----------------------------------------------------------------------------------

// An entry point as Python calls it.
class EntryPoint {
 public:
  EntryPoint(const char* name, const char* help) : name_(name), help_(help) {}
  virtual ~EntryPoint() = default;
  EntryPoint(const EntryPoint&) = delete;
  EntryPoint& operator=(const EntryPoint&) = delete;

  // Puts the function into a module. The entry point stays for as long as the process.
  static void define(std::unique_ptr<EntryPoint> entry_point, py::handle module);

 protected:
  std::vector<Bound> bound_;
  std::vector<std::string> hints_;

 private:
  // Calls it and has the outputs in `call`; false when it was refused.
  virtual bool invoke(Call& call) const = 0;

  void make_signature();
  void bind_arguments(Call& call, PyObject* const* arguments, Py_ssize_t count,
                      PyObject* keywords) const;
  py::object call(PyObject* const* arguments, Py_ssize_t count, PyObject* keywords) const;
  static PyObject* vectorcall(PyObject* self, PyObject* const* arguments, Py_ssize_t count,
                              PyObject* keywords) noexcept;

  std::string name_;
  std::string help_;
  std::string doc_;
  std::vector<py::object> input_names_;
  std::size_t required_ = 0;  // inputs that may not be left out
  py::object result_class_;   // of several outputs
  PyMethodDef method_{};
};

template <class... P>
class Function final : public EntryPoint {
 public:
  Function(const char* name, bool (*function)(P...), std::vector<Parameter> row, const char* help)
      : EntryPoint(name, help), function_(function) {
    Binder binder(row);
    bound_ = {Slot<P>::bind(binder)...};
    binder.finish();
    bind_hints(std::index_sequence_for<P...>());
  }

 private:
  template <std::size_t... I>
  void bind_hints(std::index_sequence<I...>) {
    hints_ = {Slot<P>::hint(bound_[I])...};
  }
  bool invoke(Call& call) const override {
    return invoke_with(call, std::index_sequence_for<P...>());
  }
  template <std::size_t... I>
  bool invoke_with([[maybe_unused]] Call& call, std::index_sequence<I...>) const {
    std::tuple<Slot<P>...> slots;
    (std::get<I>(slots).read(bound_[I], call), ...);
    const bool success = function_(std::get<I>(slots).pass(call)...);
    [[maybe_unused]] const auto note_count = [&](const auto& slot, const Bound& bound) {
      if constexpr (kIsCount<decltype(slot)>) {
        if (bound.role == Role::kCount) call.array_size = slot.count();
      }
    };
    (note_count(std::get<I>(slots), bound_[I]), ...);
    [[maybe_unused]] const auto report = [&](auto& slot, const Bound& bound) {
      if (success || bound.parameter.always) slot.report(bound, call);
    };
    (report(std::get<I>(slots), bound_[I]), ...);
    (std::get<I>(slots).conclude(call, success), ...);
    return success;
  }
  template <class S>
  static constexpr bool kIsCount = std::is_same_v<S, const Slot<unsigned int&>&>;

  bool (*function_)(P...);
};

// The rows of one family.
class Functions {
 public:
  explicit Functions(py::handle module) : module_(module) {}

  // An entry point that only one of the bindings has: the C++ one says bool, the C one int.
  template <class R, class... P>
  void add(const char* name, R (*function)(P...), std::initializer_list<const char*> names,
           const char* help) {
    if constexpr (std::is_same_v<R, bool>) {
      EntryPoint::define(
          std::make_unique<Function<P...>>(name, function, entrypoints::parse_row(names), help),
          module_);
    }
  }

  // An entry point that both have.
  template <class... P, class CR, class... CP>
  void add(const char* name, bool (*function)(P...), const char*, CR (*)(CP...),
           std::initializer_list<const char*> names, const char* help) {
    add(name, function, names, help);
  }

 private:
  py::handle module_;
};

}  // namespace vorn_python

#endif  // PYTHON_ENTRY_POINT_H_
