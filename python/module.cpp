// SPDX-License-Identifier: Apache-2.0
//
// The extension module vornlcapi._native: the entry points, the enumerations, and the card as
// softcard/softcard.h drives it, from which card.py makes the class Card.
#include <pybind11/pybind11.h>

#include <cstdint>
#include <string>
#include <vector>

#include "callbacks.h"
#include "family_list.h"
#include "softcard/base/address_plan.h"
#include "softcard/frames/frame.h"
#include "softcard/frames/frame_text.h"
#include "softcard/softcard.h"
#include "values.h"

namespace vorn_python {

namespace {

Parameter argument(const char* name) {
  Parameter parameter;
  parameter.name = name;
  return parameter;
}

usp_s port_record(py::handle value) {
  const Usp port = read_port(argument("port"), value);
  return {port.unit(), port.slot(), port.port()};
}

// Raises the reason of the refusal of a function of the card.
void require(bool success, const char* function) {
  if (success) return;
  const py::object refused = value_class("Refused");
  PyErr_SetObject(refused.ptr(), refused(function, softcard_last_refusal()).ptr());
  throw py::error_already_set();
}

// A text for a C function, which would read no further than to a zero.
std::string without_zero(std::string text, const char* name) {
  if (text.find('\0') != std::string::npos) {
    throw py::value_error(std::string(name) + ": there is a zero in the text");
  }
  return text;
}
std::string text_argument(const char* name, py::handle value) {
  return without_zero(Codec<std::string>::read(argument(name), value), name);
}

void use_description(const std::string& text) {
  const std::string description = without_zero(text, "description");
  require(softcard_use_description(description.c_str()) != 0, "use_description");
}

// The path as Python's os.fsencode() makes it.
void use_description_file(const py::bytes& name) {
  const std::string path = without_zero(name, "description");
  require(softcard_use_description_file(path.c_str()) != 0, "use_description_file");
}

void use_time(bool real) {
  static_cast<void>(real ? softcard_use_real_time() : softcard_use_virtual_time());
}

void inject(py::handle port, py::handle frame) {
  const std::vector<unsigned char> bytes = read_frame(argument("frame"), frame);
  require(softcard_inject(port_record(port), bytes.data(), bytes.size()) != 0, "inject");
}

py::list take(py::handle port) {
  const usp_s usp = port_record(port);
  const std::uint64_t refusals = softcard_refusals();
  py::list frames;
  std::vector<unsigned char> frame(softcard::FramePool::kLargeBytes);
  while (softcard_waiting(usp) != 0) {
    const std::size_t bytes = softcard_take(usp, frame.data(), frame.size());
    frames.append(show_frame(frame.data(), bytes));
  }
  // Nothing waits also where there is no memory that it could wait in.
  require(softcard_refusals() == refusals || py::len(frames) != 0, "frames");
  return frames;
}

std::uint64_t drops(py::handle port, py::handle reason) {
  std::uint64_t frames = 0;
  const std::string name = text_argument("reason", reason);
  require(softcard_drops(port_record(port), name.c_str(), &frames) != 0, "drops");
  return frames;
}

void fail(py::handle operation, py::handle nth) {
  const std::string name = text_argument("operation", operation);
  const auto number = static_cast<unsigned int>(read_number(argument("nth"), nth, 0, UINT32_MAX));
  require(softcard_fail(name.c_str(), number) != 0, "fail");
}

std::string port_text(py::handle unit, py::handle slot, py::handle port) {
  const auto number = [](const char* name, py::handle value) {
    return static_cast<unsigned int>(read_number(argument(name), value, 0, UINT32_MAX));
  };
  return softcard::AddressPlan::text(
      Usp(number("unit", unit), number("slot", slot), number("port", port)));
}

py::list drop_reasons() {
  py::list reasons;
  for (unsigned n = 0; softcard_drop_reason(n) != nullptr; ++n) {
    reasons.append(softcard_drop_reason(n));
  }
  return reasons;
}

std::string frame_text(py::handle frame) {
  const std::vector<unsigned char> bytes = read_frame(argument("frame"), frame);
  return softcard::print_frame(bytes.data(), bytes.size());
}

bool frame_matches(py::handle frame, py::handle pattern) {
  const std::vector<unsigned char> bytes = read_frame(argument("frame"), frame);
  const std::string text = Codec<std::string>::read(argument("pattern"), pattern);
  std::string error;
  const bool matches = softcard::frame_matches(text, bytes.data(), bytes.size(), error);
  if (!error.empty()) throw py::value_error("pattern: " + error);
  return matches;
}

void add_card_functions(py::module_& module) {
  module.def("use_description", &use_description);
  module.def("use_description_file", &use_description_file);
  module.def("use_time", &use_time);
  module.def("port_count", [] { return softcard_port_count(); });
  module.def("last_refusal", [] { return std::string(softcard_last_refusal()); });
  module.def("run", [] { return softcard_run(); });
  module.def("warp", [](std::uint64_t ns) { require(softcard_warp(ns) != 0, "warp"); });
  module.def("now", [] { return softcard_now(); });
  module.def("inject", &inject);
  module.def("take", &take);
  module.def("cut", [](py::handle port) { require(softcard_cut(port_record(port)) != 0, "cut"); });
  module.def("restore",
             [](py::handle port) { require(softcard_restore(port_record(port)) != 0, "restore"); });
  module.def("patch", [](py::handle port, py::handle other) {
    require(softcard_patch(port_record(port), port_record(other)) != 0, "patch");
  });
  module.def("unpatch",
             [](py::handle port) { require(softcard_unpatch(port_record(port)) != 0, "unpatch"); });
  module.def("last_trace", [] { return std::string(softcard_last_trace()); });
  module.def("drops", &drops);
  module.def("drop_reasons", &drop_reasons);
  module.def("fail", &fail);
  module.def("fail_none", &softcard_fail_none);
  module.def("port_text", &port_text);
  module.def("port_numbers", [](py::handle port) {
    const usp_s usp = port_record(port);
    return py::make_tuple(usp.unit, usp.slot, usp.port);
  });
  module.def("frame_bytes", [](py::handle frame) {
    const std::vector<unsigned char> bytes = read_frame(argument("frame"), frame);
    return py::bytes(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  });
  module.def("frame_text", &frame_text);
  module.def("frame_matches", &frame_matches);
}

}  // namespace

}  // namespace vorn_python

PYBIND11_MODULE(_native, module) {
  using namespace vorn_python;
  add_all_functions(module);
  // Those that no entry point has in its signature.
  rx_reason_class();
  mac_update_class();
  flow_port_class();
  udf_base_class();
  packet_type_class();
  for (const EnumClass* const made : enum_classes())
    module.attr(made->name().c_str()) = made->type();
  // What the package offers: all but the card's functions, of which it makes the class Card.
  py::list offered;
  for (const auto& [name, value] : py::reinterpret_borrow<py::dict>(module.attr("__dict__"))) {
    if (!name.attr("startswith")("_").cast<bool>()) offered.append(name);
  }
  module.attr("__all__") = offered;
  add_card_functions(module);
}
