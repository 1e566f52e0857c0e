// SPDX-License-Identifier: Apache-2.0
//
// Python functions as callbacks of the library. The interface's callbacks are C functions, and that
// for link changes has no user data: so each registered Python function has a C function of its own
// out of a fixed number, which calls it. It is kept alive until it is withdrawn or the card ends.
//
// An exception of a callback passes through the card to whoever had it deliver events.
#ifndef PYTHON_CALLBACKS_H_
#define PYTHON_CALLBACKS_H_

#include <pybind11/cast.h>

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "values.h"

namespace vorn_python {

// Callbacks of one form that may be registered at the same time.
constexpr std::size_t kMostCallbacks = 64;

// A Python function with its user data, null for none.
struct Callback {
  py::object function;
  py::object user_data;
};

template <class... A>
class CallbackPool {
 public:
  using Function = void (*)(A...);

  // The C function of a Python function; null when there is none.
  static Function find(const Callback& callback) {
    for (std::size_t n = 0; n < kMostCallbacks; ++n) {
      const Callback& used = slots()[n];
      // A method is a new object each time it is looked up, equal to the last.
      if (used.function && used.user_data.is(callback.user_data) &&
          used.function.equal(callback.function)) {
        return functions()[n];
      }
    }
    return nullptr;
  }
  static Function add(const Callback& callback) {
    for (std::size_t n = 0; n < kMostCallbacks; ++n) {
      if (slots()[n].function) continue;
      slots()[n] = callback;
      return functions()[n];
    }
    throw std::runtime_error(std::to_string(kMostCallbacks) +
                             " callbacks of this form are registered, and no more may be");
  }
  static void remove(void* function) {
    for (std::size_t n = 0; n < kMostCallbacks; ++n) {
      if (reinterpret_cast<void*>(functions()[n]) == function) slots()[n] = {};
    }
  }
  static void clear() {
    for (Callback& slot : slots()) slot = {};
  }

 private:
  // They outlive the interpreter, and are empty then or never released.
  static std::array<Callback, kMostCallbacks>& slots() {
    static auto* const kSlots = new std::array<Callback, kMostCallbacks>;
    return *kSlots;
  }
  template <std::size_t N>
  static void call(A... arguments) {
    const Callback callback = slots()[N];  // holds it when it withdraws itself
    if (!callback.function) return;
    py::list list;
    (append(list, arguments), ...);
    if (callback.user_data) list.append(callback.user_data);
    const py::tuple tuple(list);
    PyObject* const result = PyObject_CallObject(callback.function.ptr(), tuple.ptr());
    if (result == nullptr) throw py::error_already_set();
    Py_DECREF(result);
  }
  template <class T>
  static void append(py::list& list, T argument) {
    if constexpr (std::is_same_v<T, void*>) {
      static_cast<void>(argument);  // Python's own user data stands in its place
    } else if constexpr (std::is_pointer_v<T>) {
      list.append(show_record(*argument));
    } else {
      list.append(show_record(argument));
    }
  }
  template <std::size_t... N>
  static std::array<Function, kMostCallbacks> make(std::index_sequence<N...>) {
    return {&call<N>...};
  }
  static const std::array<Function, kMostCallbacks>& functions() {
    static const std::array<Function, kMostCallbacks> all =
        make(std::make_index_sequence<kMostCallbacks>());
    return all;
  }
};

// What deregistering needs: the C function of a Python function in either form, null when there is
// none, and giving it back.
void* find_callback(lcmgr_report_event_t event, const Callback& callback);
void remove_callback(void* function);
// The card has ended.
void clear_callbacks();

}  // namespace vorn_python

#endif  // PYTHON_CALLBACKS_H_
