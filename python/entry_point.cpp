// SPDX-License-Identifier: Apache-2.0
#include "entry_point.h"

#include <pybind11/pybind11.h>

#include <algorithm>
#include <cctype>
#include <exception>

#include "softcard/softcard.h"
#include "vornlcapi/api/lifecycle.h"

namespace vorn_python {

namespace {

int keep_entry(const ctype_l2_addr_s* entry, void* entries) {
  static_cast<std::vector<ctype_l2_addr_s>*>(entries)->push_back(*entry);
  return 1;
}

// A callback that was never registered still has an address, for the card to refuse.
void no_callback() {}

// vorn_get_vlan_info: VlanInfo.
std::string result_class_name(const std::string& function) {
  std::string name;
  bool start = true;
  for (const char c : function.substr(function.find("get_") == 5 ? 9 : 5)) {
    if (c != '_') {
      name += start ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
    }
    start = c == '_';
  }
  return name;
}

// A name as an argument of a Python function.
std::string python_name(const std::string& name) {
  const bool reserved = py::module_::import("keyword").attr("iskeyword")(name).cast<bool>();
  return reserved ? name + '_' : name;
}

}  // namespace

// ---- Slots --------------------------------------------------------------------------------------

void read_callback(const Bound& bound, Call& call) {
  const py::handle given = call.take();
  if (PyCallable_Check(given.ptr()) == 0) {
    throw py::type_error(bound.parameter.name + ": " + py::repr(given).cast<std::string>() +
                         " cannot be called");
  }
  call.callback.function = py::reinterpret_borrow<py::object>(given);
}

Slot<void*>::Use Slot<void*>::use_of(const Bound& bound) {
  if (bound.role == Role::kOut) return Use::kWalk;
  return bound.parameter.kind == "callback" ? Use::kCallback : Use::kUserData;
}

std::string Slot<void*>::hint(const Bound& bound) {
  switch (use_of(bound)) {
    case Use::kWalk:
      return "list[L2Addr]";
    case Use::kCallback:
      return "Callable[..., Any]";
    case Use::kUserData:
      break;
  }
  return "Any";
}

void Slot<void*>::read(const Bound& bound, Call& call) {
  use_ = use_of(bound);
  if (use_ == Use::kCallback) {
    read_callback(bound, call);
  } else if (use_ == Use::kUserData) {
    const py::handle given = call.take();
    if (given && !given.is_none()) {
      call.callback.user_data = py::reinterpret_borrow<py::object>(given);
    }
  }
}

void* Slot<void*>::pass(Call& call) {
  if (use_ == Use::kUserData) return nullptr;
  if (use_ == Use::kWalk) {
    walk_ = {&keep_entry, &entries_};
    return &walk_;
  }
  function_ = find_callback(call.event, call.callback);
  return function_ != nullptr ? function_ : reinterpret_cast<void*>(&no_callback);
}

void Slot<void*>::report(const Bound& bound, Call& call) const {
  if (bound.role != Role::kOut) return;
  py::list entries;
  for (const ctype_l2_addr_s& entry : entries_) entries.append(show_record(entry));
  call.give(entries);
}

void Slot<void*>::conclude(Call&, bool success) {
  if (success && function_ != nullptr) remove_callback(function_);
}

// ---- Functions ----------------------------------------------------------------------------------

void EntryPoint::define(std::unique_ptr<EntryPoint> entry_point, py::handle module) {
  EntryPoint* const entry = entry_point.release();
  entry->make_signature();
  entry->method_.ml_name = entry->name_.c_str();
  entry->method_.ml_meth =
      reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(&EntryPoint::vectorcall));
  entry->method_.ml_flags = METH_FASTCALL | METH_KEYWORDS;
  entry->method_.ml_doc = entry->doc_.c_str();
  const py::capsule self(entry);
  const py::str module_name("vornlcapi");
  const auto function = py::reinterpret_steal<py::object>(
      PyCFunction_NewEx(&entry->method_, self.ptr(), module_name.ptr()));
  if (!function) throw py::error_already_set();
  module.attr(entry->name_.c_str()) = function;
  if (entry->result_class_) {
    module.attr(entry->result_class_.attr("__name__")) = entry->result_class_;
  }
}

// The names of inputs and outputs, and what help() and the stubs are made of.
void EntryPoint::make_signature() {
  std::string plain = "(";
  std::string typed = "(";
  std::vector<std::string> output_names;
  std::vector<std::string> output_hints;
  for (std::size_t i = 0; i < bound_.size(); ++i) {
    const Parameter& parameter = bound_[i].parameter;
    if (bound_[i].role == Role::kOut) {
      output_names.push_back(python_name(parameter.name));
      output_hints.push_back(hints_[i]);
    }
    if (bound_[i].role != Role::kIn) continue;
    const std::string name = python_name(parameter.name);
    const std::string separator = input_names_.empty() ? "" : ", ";
    plain += separator + name;
    typed += separator + name + ": " + hints_[i];
    if (parameter.optional) {
      plain += "=None";
      typed += " = None";
    } else if (required_ != input_names_.size()) {
      throw std::logic_error(name_ + ": " + name + " stands behind an optional argument");
    } else {
      ++required_;
    }
    input_names_.push_back(
        py::reinterpret_steal<py::object>(PyUnicode_InternFromString(name.c_str())));
  }
  if (input_names_.size() > kMostInputs || output_names.size() > kMostOutputs) {
    throw std::logic_error(name_ + " has more arguments than there is room for");
  }
  std::string result = "None";
  if (output_hints.size() == 1) result = output_hints.front();
  if (output_hints.size() > 1) {
    result = result_class_name(name_);
    py::list fields;
    for (std::size_t i = 0; i < output_names.size(); ++i) {
      fields.append(py::make_tuple(output_names[i], output_hints[i]));
    }
    result_class_ = value_class("result_class")(result, fields);
  }
  doc_ = name_ + plain + ")\n--\n\n" + name_ + typed + ") -> " + result + "\n\n" + help_;
}

// Puts the arguments that were given in order, null where an optional one was left out.
void EntryPoint::bind_arguments(Call& call, PyObject* const* arguments, Py_ssize_t count,
                                PyObject* keywords) const {
  const auto given = static_cast<std::size_t>(count);
  if (given > input_names_.size()) {
    throw py::type_error(name_ + "() takes " + std::to_string(input_names_.size()) +
                         " arguments but " + std::to_string(given) + " were given");
  }
  std::copy(arguments, arguments + count, call.inputs.begin());
  const Py_ssize_t named = keywords == nullptr ? 0 : PyTuple_GET_SIZE(keywords);
  for (Py_ssize_t n = 0; n < named; ++n) {
    PyObject* const keyword = PyTuple_GET_ITEM(keywords, n);
    const auto found =
        std::find_if(input_names_.begin(), input_names_.end(), [&](const py::object& name) {
          return name.ptr() == keyword || PyUnicode_Compare(name.ptr(), keyword) == 0;
        });
    const std::string text = found == input_names_.end() ? py::str(keyword).cast<std::string>()
                                                         : found->cast<std::string>();
    if (found == input_names_.end()) {
      throw py::type_error(name_ + "() got an unexpected keyword argument '" + text + "'");
    }
    PyObject*& input = call.inputs[static_cast<std::size_t>(found - input_names_.begin())];
    if (input != nullptr) {
      throw py::type_error(name_ + "() got multiple values for argument '" + text + "'");
    }
    input = arguments[count + n];
  }
  for (std::size_t i = 0; i < required_; ++i) {
    if (call.inputs[i] != nullptr) continue;
    throw py::type_error(name_ + "() is missing its argument '" +
                         input_names_[i].cast<std::string>() + "'");
  }
}

py::object EntryPoint::call(PyObject* const* arguments, Py_ssize_t count,
                            PyObject* keywords) const {
  Call call;
  bind_arguments(call, arguments, count, keywords);
  const std::uint64_t refusals = softcard_refusals();
  const bool success = invoke(call);
  if (name_ == "vorn_lcmgr_api_terminate" && success) clear_callbacks();
  py::object result = py::none();
  if (call.output_count == 1) result = call.outputs[0];
  if (call.output_count > 1) {
    py::tuple outputs(call.output_count);
    for (std::size_t i = 0; i < call.output_count; ++i) outputs[i] = call.outputs[i];
    result = result_class_(*outputs);
  }
  if (success) return result;
  const std::string reason = softcard_refusals() == refusals ? "" : softcard_last_refusal();
  const py::object refused = value_class("Refused");
  PyErr_SetObject(refused.ptr(), refused(name_, reason, result).ptr());
  throw py::error_already_set();
}

PyObject* EntryPoint::vectorcall(PyObject* self, PyObject* const* arguments, Py_ssize_t count,
                                 PyObject* keywords) noexcept {
  try {
    const auto* const entry = static_cast<const EntryPoint*>(PyCapsule_GetPointer(self, nullptr));
    return entry->call(arguments, count, keywords).release().ptr();
  } catch (py::error_already_set& error) {
    error.restore();
  } catch (const py::builtin_exception& error) {
    error.set_error();
  } catch (const std::bad_alloc&) {
    PyErr_NoMemory();
  } catch (const std::exception& error) {
    PyErr_SetString(PyExc_RuntimeError, error.what());
  }
  return nullptr;
}

}  // namespace vorn_python
