// SPDX-License-Identifier: Apache-2.0
//
// Reading and writing descriptors through an event loop, buffer by buffer.

#ifndef LIBXORP_ASYNCIO_HH_
#define LIBXORP_ASYNCIO_HH_

#include <sys/uio.h>

#include "libxorp/eventloop.hh"

// XORP releases before 1.8.3 lack the virtual toString(), and the destructor stands one place
// earlier in their tables of virtual functions. Define this as 0, for every file of the process,
// in a host that has one of those.
#ifndef XORP_ASYNCIO_HAS_TOSTRING
#define XORP_ASYNCIO_HAS_TOSTRING 1
#endif

// The base of readers and writers. The virtual functions stay in this order.
class AsyncFileOperator {
 public:
  enum Event : unsigned {
    DATA = 1,         // bytes were transferred
    FLUSHING = 2,     // the buffer is handed back by flush_buffers()
    OS_ERROR = 4,     // the system call failed, see error(); the operator has stopped
    END_OF_FILE = 8,  // read(2) gave 0: for a datagram socket just an empty datagram
    WOULDBLOCK = 16   // never produced by a reader
  };

  // Gets the event, the start of the buffer, the whole size of the buffer and the offset behind
  // the last byte transferred, both in bytes. It may stop or delete the operator that calls it.
  typedef XorpCallback4<void, Event, const uint8_t*, size_t, size_t>::RefPtr Callback;

  virtual size_t buffers_remaining() const = 0;

  // Stops, takes each buffer out and calls its callback with FLUSHING and its current offset.
  // Those callbacks must not delete the operator.
  virtual void flush_buffers() = 0;

  // Takes up work; true if it runs already. False when no buffer is queued or when the descriptor
  // already has a callback for the same kind of event.
  virtual bool start() = 0;

  // Leaves the loop. Buffers stay queued and nobody is called.
  virtual void stop() = 0;

#if XORP_ASYNCIO_HAS_TOSTRING
  // One line for a log.
  virtual std::string toString() const;
#endif

  bool resume() { return start(); }
  bool running() const { return _running; }
  XorpFd fd() const { return _fd; }

  // The errno of the last failed system call, would-block included; 0 if none failed.
  int error() const { return _last_error; }

 protected:
  AsyncFileOperator(EventLoop& e, XorpFd fd, int priority = XorpTask::PRIORITY_DEFAULT)
      : _eventloop(e), _fd(fd), _running(false), _last_error(0), _priority(priority) {}
  virtual ~AsyncFileOperator();

  EventLoop& _eventloop;
  XorpFd _fd;
  bool _running;
  int _last_error;
  int _priority;
};

// Reads into queued buffers, in order. Do not copy one.
//
// Each time the descriptor is readable, one read(2) fills the room left in the first buffer, and
// its callback gets DATA with the total in the buffer. A buffer leaves the queue only when it is
// full: what arrives meanwhile goes behind the earlier bytes. With the last buffer the reader
// stops, before that buffer's callback, so a callback that queues another one starts it again.
//
// Would-block and interrupted reads call nobody. An error stops the reader before the callback
// gets OS_ERROR; the buffer stays queued. Memory stays the caller's throughout.
class AsyncFileReader : public AsyncFileOperator {
 public:
  // `fd` must not block.
  AsyncFileReader(EventLoop& e, XorpFd fd, int priority = XorpTask::PRIORITY_DEFAULT);

  // Stops and forgets the queued buffers; no callback is made.
  virtual ~AsyncFileReader();

  // Queues a buffer without starting. `buffer_bytes` is not 0.
  void add_buffer(uint8_t* buffer, size_t buffer_bytes, const Callback& cb);

  // The same for a buffer whose first `offset` bytes are filled; less than `buffer_bytes`.
  void add_buffer_with_offset(uint8_t* buffer, size_t buffer_bytes, size_t offset,
                              const Callback& cb);

  bool start() override;
  void stop() override;
  void flush_buffers() override;
#if XORP_ASYNCIO_HAS_TOSTRING
  std::string toString() const override;
#endif
  size_t buffers_remaining() const override { return _buffers.size(); }

 protected:
  class BufferInfo {
   public:
    BufferInfo(uint8_t* b, size_t bytes, size_t filled, const Callback& cb)
        : _buffer(b), _buffer_bytes(bytes), _offset(filled), _cb(cb) {}

    uint8_t* _buffer;
    size_t _buffer_bytes;
    size_t _offset;
    Callback _cb;
  };

  void read(XorpFd fd, IoEventType type);

  // Takes note of `done` bytes read (0: end of file, -1: `err` says why not) and calls back.
  // Nothing of the reader may be touched afterwards.
  void complete_transfer(int err, ssize_t done);

  std::list<BufferInfo*> _buffers;
};

// Writes queued buffers, in order; up to `coalesce` of them, 16 at most, in one system call. A
// buffer's callback gets DATA once after each write that took bytes of it, and after OS_ERROR the
// buffer stays queued. A writer that is never given a buffer never registers with the loop.
class AsyncFileWriter : public NONCOPYABLE, public AsyncFileOperator {
 public:
  // `fd` must not block.
  AsyncFileWriter(EventLoop& e, XorpFd fd, uint32_t coalesce = 1,
                  int priority = XorpTask::PRIORITY_DEFAULT);

  // Stops and forgets the queued buffers; no callback is made.
  virtual ~AsyncFileWriter();

  // Queues a buffer without starting; the memory stays the caller's until its last callback.
  void add_buffer(const uint8_t* buffer, size_t buffer_bytes, const Callback& cb);
  void add_buffer_with_offset(const uint8_t* buffer, size_t buffer_bytes, size_t offset,
                              const Callback& cb);

  // Queues a copy of `data`.
  void add_data(const std::vector<uint8_t>& data, const Callback& cb);

  bool start() override;
  void stop() override;
  void flush_buffers() override;
#if XORP_ASYNCIO_HAS_TOSTRING
  std::string toString() const override;
#endif
  size_t buffers_remaining() const override { return _buffers.size(); }

 protected:
  class BufferInfo;

  void write(XorpFd fd, IoEventType type);

  uint32_t _coalesce;
  iovec* _iov;           // _coalesce of them
  ref_ptr<int> _dtoken;  // shared with whoever must notice that a callback deleted the writer
  std::list<BufferInfo*> _buffers;
};

#endif  // LIBXORP_ASYNCIO_HH_
