// SPDX-License-Identifier: Apache-2.0
//
// The binary interface between the socket and a host's event loop: sizes on both targets, values,
// and places in the tables of virtual functions.

#include <gtest/gtest.h>

#include "libxorp/asyncio.hh"
#include "vornlcapi/socket.h"

namespace {

constexpr bool k64 = sizeof(void*) == 8;
constexpr size_t bytes(size_t on_64, size_t on_32) { return k64 ? on_64 : on_32; }

// A list of the older library ABI stores no count.
#if _GLIBCXX_USE_CXX11_ABI
constexpr size_t kListCount = sizeof(size_t);
#else
constexpr size_t kListCount = 0;
#endif

typedef void Completion(AsyncFileOperator::Event, const uint8_t*, size_t, size_t);
typedef XorpCallback4<void, AsyncFileOperator::Event, const uint8_t*, size_t, size_t> Callback;
struct Reader : AsyncFileReader {
  typedef BufferInfo Buffer;
};

static_assert(sizeof(XorpFd) == 4 && alignof(XorpFd) == 4, "");
static_assert(sizeof(TimeVal) == 8 && alignof(TimeVal) == 4, "");
static_assert(sizeof(AsyncFileOperator) == bytes(32, 24), "");
static_assert(sizeof(AsyncFileReader) == bytes(48, 32) + kListCount, "");
static_assert(sizeof(AsyncFileWriter) == bytes(80, 48) + kListCount, "");
static_assert(sizeof(Reader::Buffer) == bytes(40, 20), "");
static_assert(sizeof(EventLoop) == bytes(1272, 1156), "");
static_assert(sizeof(ref_ptr<int>) == bytes(16, 8), "");
static_assert(sizeof(AsyncFileOperator::Callback) == bytes(16, 8), "");
static_assert(sizeof(IoEventCb) == bytes(16, 8), "");
static_assert(sizeof(Callback) == sizeof(void*), "");
static_assert(sizeof(XorpTimer) == sizeof(void*) && sizeof(XorpTask) == sizeof(void*), "");
static_assert(sizeof(TimerList) == bytes(64, 32), "");
static_assert(sizeof(TaskList) == bytes(48, 24), "");
static_assert(sizeof(SelectorList) == bytes(864, 824), "");
static_assert(sizeof(TimerNode) == bytes(56, 36), "");
static_assert(sizeof(TaskNode) == bytes(72, 40), "");
static_assert(sizeof(ref_counter_pool) == bytes(32, 20), "");
static_assert(sizeof(VornSocket) == bytes(120, 60), "");
static_assert(alignof(VornSocket) == alignof(void*), "");
static_assert(alignof(AsyncFileReader) == alignof(void*), "");

static_assert(sizeof(AsyncFileOperator::Event) == 4, "");
static_assert(AsyncFileOperator::DATA == 1 && AsyncFileOperator::FLUSHING == 2 &&
                  AsyncFileOperator::OS_ERROR == 4 && AsyncFileOperator::END_OF_FILE == 8 &&
                  AsyncFileOperator::WOULDBLOCK == 16,
              "");
static_assert(IOT_READ == 0 && IOT_WRITE == 1 && IOT_EXCEPTION == 2 && IOT_ANY == 6, "");
static_assert(XorpTask::PRIORITY_DEFAULT == 4 && XorpTask::PRIORITY_INFINITY == 255, "");

// The layout of what callback() makes: the object at one pointer, the member at two.
struct Object {
  void member(AsyncFileOperator::Event, const uint8_t*, size_t, size_t) {}
};
template <class Target>
using Made = xorp_callback::concrete<
    void, Target, xorp_callback::types<AsyncFileOperator::Event, const uint8_t*, size_t, size_t>,
    xorp_callback::types<>>;
static_assert(sizeof(Made<xorp_callback::member_target<void, Object, decltype(&Object::member)>>) ==
                  bytes(32, 16),
              "");
static_assert(sizeof(Made<xorp_callback::function_target<void, Completion*>>) == bytes(16, 8), "");

// Finds out through which slot a virtual function is called, by calling through a table whose
// slots all do nothing but note their number.
int called_slot = -1;
template <int slot>
long note(void*) {
  called_slot = slot;
  return 0;
}
typedef long (*Slot)(void*);
const Slot kNotes[] = {note<0>, note<1>, note<2>, note<3>, note<4>, note<5>, note<6>, note<7>};

// An object that is nothing but a pointer to that table. The compiler must not know its type.
template <class T>
T* impostor() {
  alignas(16) static unsigned char storage[2048];
  const Slot* const table = kNotes;
  std::memcpy(storage, &table, sizeof table);
  void* volatile object = storage;
  return static_cast<T*>(object);
}

// The calls go through wrong types on purpose, which the sanitizer would report.
#if defined(__clang__) || defined(__GNUC__)
#define NO_VPTR_CHECK __attribute__((noinline, no_sanitize("undefined")))
#endif
NO_VPTR_CHECK void call_start(AsyncFileOperator* op) { op->start(); }
NO_VPTR_CHECK void call_stop(AsyncFileOperator* op) { op->stop(); }
NO_VPTR_CHECK void call_flush(AsyncFileOperator* op) { op->flush_buffers(); }
NO_VPTR_CHECK void call_remaining(AsyncFileOperator* op) { op->buffers_remaining(); }
NO_VPTR_CHECK void call_delete(AsyncFileReader* reader) { delete reader; }
NO_VPTR_CHECK void call_dispatch(Callback* cb) {
  cb->dispatch(AsyncFileOperator::DATA, nullptr, 0, 0);
}

TEST(Layout, VirtualFunctionsStandInTheirSlots) {
  const int kHasToString = XORP_ASYNCIO_HAS_TOSTRING;
  call_remaining(impostor<AsyncFileOperator>());
  EXPECT_EQ(called_slot, 0);
  call_flush(impostor<AsyncFileOperator>());
  EXPECT_EQ(called_slot, 1);
  call_start(impostor<AsyncFileOperator>());
  EXPECT_EQ(called_slot, 2);
  call_stop(impostor<AsyncFileOperator>());
  EXPECT_EQ(called_slot, 3);
  call_delete(impostor<AsyncFileReader>());
  EXPECT_EQ(called_slot, 5 + kHasToString);
  call_dispatch(impostor<Callback>());
  EXPECT_EQ(called_slot, 2);
}

// running() is compiled into the socket.
struct Probe : AsyncFileOperator {
  explicit Probe(EventLoop& loop) : AsyncFileOperator(loop, XorpFd(7), 3) {}
  size_t buffers_remaining() const override { return 0; }
  void flush_buffers() override {}
  bool start() override { return false; }
  void stop() override {}
  size_t place_of(const void* member) const {
    return static_cast<size_t>(static_cast<const char*>(member) -
                               reinterpret_cast<const char*>(this));
  }
  std::vector<size_t> places() const {
    return {place_of(&_fd), place_of(&_running), place_of(&_last_error), place_of(&_priority)};
  }
};

TEST(Layout, OperatorMembersStandInTheirPlaces) {
  EventLoop loop;
  const Probe probe(loop);
  const std::vector<size_t> expected =
      k64 ? std::vector<size_t>{16, 20, 24, 28} : std::vector<size_t>{8, 12, 16, 20};
  EXPECT_EQ(probe.places(), expected);
}

TEST(Layout, LargestReadIsAnObject) {
  const unsigned int* const address = &VornSocket::max_socket_buffer_size;
  EXPECT_EQ(*address, 4096u);
}

}  // namespace
