// SPDX-License-Identifier: Apache-2.0
//
// The asynchronous reader and writer.

#include "libxorp/asyncio.hh"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "softcard/eventloop/fatal.h"

namespace {

const uint32_t kLargestCoalesce = 16;

void require_non_blocking(int fd) {
  softcard::require((fcntl(fd, F_GETFL) & O_NONBLOCK) != 0,
                    "a reader or writer needs a descriptor that does not block");
}

bool try_again(int err) { return err == EAGAIN || err == EWOULDBLOCK || err == EINTR; }

#if XORP_ASYNCIO_HAS_TOSTRING
std::string describe(const char* what, int fd, bool running, size_t buffers, int error) {
  return std::string(what) + " on descriptor " + std::to_string(fd) +
         (running ? ", running, " : ", stopped, ") + std::to_string(buffers) +
         " buffers, last error " + std::to_string(error);
}
#endif

}  // namespace

// ---- AsyncFileOperator --------------------------------------------------------------------------

AsyncFileOperator::~AsyncFileOperator() = default;

#if XORP_ASYNCIO_HAS_TOSTRING
std::string AsyncFileOperator::toString() const {
  return describe("operator", _fd, _running, buffers_remaining(), _last_error);
}
#endif

// ---- AsyncFileReader ----------------------------------------------------------------------------

AsyncFileReader::AsyncFileReader(EventLoop& e, XorpFd fd, int priority)
    : AsyncFileOperator(e, fd, priority) {
  require_non_blocking(fd);
}

AsyncFileReader::~AsyncFileReader() {
  AsyncFileReader::stop();
  for (const BufferInfo* buffer : _buffers) delete buffer;
}

void AsyncFileReader::add_buffer(uint8_t* buffer, size_t buffer_bytes, const Callback& cb) {
  add_buffer_with_offset(buffer, buffer_bytes, 0, cb);
}

void AsyncFileReader::add_buffer_with_offset(uint8_t* buffer, size_t buffer_bytes, size_t offset,
                                             const Callback& cb) {
  softcard::require(offset < buffer_bytes, "a read buffer without room");
  _buffers.push_back(new BufferInfo(buffer, buffer_bytes, offset, cb));
}

bool AsyncFileReader::start() {
  if (_running) return true;
  if (_buffers.empty()) return false;
  _running =
      _eventloop.add_ioevent_cb(_fd, IOT_READ, callback(this, &AsyncFileReader::read), _priority);
  return _running;
}

void AsyncFileReader::stop() {
  _eventloop.remove_ioevent_cb(_fd, IOT_READ);
  _running = false;
}

void AsyncFileReader::flush_buffers() {
  stop();
  while (!_buffers.empty()) {
    const std::unique_ptr<const BufferInfo> buffer(_buffers.front());
    _buffers.pop_front();
    buffer->_cb->dispatch(FLUSHING, buffer->_buffer, buffer->_buffer_bytes, buffer->_offset);
  }
}

#if XORP_ASYNCIO_HAS_TOSTRING
std::string AsyncFileReader::toString() const {
  return describe("reader", _fd, _running, buffers_remaining(), _last_error);
}
#endif

void AsyncFileReader::read(XorpFd fd, IoEventType /*type*/) {
  if (!_running || _buffers.empty()) return;
  const BufferInfo& head = *_buffers.front();
  const ssize_t done = ::read(fd, head._buffer + head._offset, head._buffer_bytes - head._offset);
  const int err = done < 0 ? errno : 0;
  if (done < 0) _last_error = err;
  if (done < 0 && try_again(err)) return;
  complete_transfer(err, done);
}

void AsyncFileReader::complete_transfer(int err, ssize_t done) {
  BufferInfo* const head = _buffers.front();
  // The callback may delete this reader and the buffer with it, so what the call needs is copied.
  const Callback cb = head->_cb;
  const uint8_t* const buffer = head->_buffer;
  const size_t buffer_bytes = head->_buffer_bytes;

  Event event = DATA;
  if (done > 0) {
    head->_offset += static_cast<size_t>(done);
  } else if (done == 0) {
    event = END_OF_FILE;
  } else {
    _last_error = err;
    event = OS_ERROR;
    stop();
  }
  const size_t offset = head->_offset;
  if (offset == buffer_bytes) {
    _buffers.pop_front();
    delete head;
    if (_buffers.empty()) stop();
  }
  cb->dispatch(event, buffer, buffer_bytes, offset);
}

// ---- AsyncFileWriter ----------------------------------------------------------------------------

class AsyncFileWriter::BufferInfo {
 public:
  BufferInfo(const uint8_t* buffer, size_t bytes, size_t offset, const Callback& cb)
      : _buffer(buffer), _buffer_bytes(bytes), _offset(offset), _cb(cb) {}
  BufferInfo(const std::vector<uint8_t>& data, const Callback& cb)
      : _data(data), _buffer(_data.data()), _buffer_bytes(_data.size()), _offset(0), _cb(cb) {}
  BufferInfo(const BufferInfo&) = delete;
  BufferInfo& operator=(const BufferInfo&) = delete;

  size_t left() const { return _buffer_bytes - _offset; }
  void tell(Event event) const { _cb->dispatch(event, _buffer, _buffer_bytes, _offset); }

  std::vector<uint8_t> _data;  // empty when the caller keeps the bytes
  const uint8_t* _buffer;
  size_t _buffer_bytes;
  size_t _offset;
  Callback _cb;
};

AsyncFileWriter::AsyncFileWriter(EventLoop& e, XorpFd fd, uint32_t coalesce, int priority)
    : AsyncFileOperator(e, fd, priority),
      _coalesce(std::min(std::max(coalesce, 1u), kLargestCoalesce)),
      _iov(nullptr),
      _dtoken(new int(0)) {
  require_non_blocking(fd);
  _iov = new iovec[_coalesce];
}

AsyncFileWriter::~AsyncFileWriter() {
  AsyncFileWriter::stop();
  delete[] _iov;
  for (const BufferInfo* buffer : _buffers) delete buffer;
}

void AsyncFileWriter::add_buffer(const uint8_t* buffer, size_t buffer_bytes, const Callback& cb) {
  add_buffer_with_offset(buffer, buffer_bytes, 0, cb);
}

void AsyncFileWriter::add_buffer_with_offset(const uint8_t* buffer, size_t buffer_bytes,
                                             size_t offset, const Callback& cb) {
  softcard::require(offset < buffer_bytes, "a write buffer without bytes");
  _buffers.push_back(new BufferInfo(buffer, buffer_bytes, offset, cb));
}

void AsyncFileWriter::add_data(const std::vector<uint8_t>& data, const Callback& cb) {
  softcard::require(!data.empty(), "a write buffer without bytes");
  _buffers.push_back(new BufferInfo(data, cb));
}

bool AsyncFileWriter::start() {
  if (_running) return true;
  if (_buffers.empty()) return false;
  _running =
      _eventloop.add_ioevent_cb(_fd, IOT_WRITE, callback(this, &AsyncFileWriter::write), _priority);
  return _running;
}

void AsyncFileWriter::stop() {
  // A writer that is not running may share its descriptor with one that is.
  if (_running) _eventloop.remove_ioevent_cb(_fd, IOT_WRITE);
  _running = false;
}

void AsyncFileWriter::flush_buffers() {
  stop();
  while (!_buffers.empty()) {
    const std::unique_ptr<const BufferInfo> buffer(_buffers.front());
    _buffers.pop_front();
    buffer->tell(FLUSHING);
  }
}

#if XORP_ASYNCIO_HAS_TOSTRING
std::string AsyncFileWriter::toString() const {
  return describe("writer", _fd, _running, buffers_remaining(), _last_error);
}
#endif

void AsyncFileWriter::write(XorpFd fd, IoEventType /*type*/) {
  if (!_running || _buffers.empty()) return;
  int filled = 0;
  for (const BufferInfo* buffer : _buffers) {
    if (filled == static_cast<int>(_coalesce)) break;
    _iov[filled].iov_base = const_cast<uint8_t*>(buffer->_buffer + buffer->_offset);
    _iov[filled].iov_len = buffer->left();
    ++filled;
  }
  const ssize_t done = ::writev(fd, _iov, filled);
  if (done < 0) {
    _last_error = errno;
    if (try_again(_last_error)) return;
    stop();
    const BufferInfo& head = *_buffers.front();
    const Callback cb = head._cb;
    cb->dispatch(OS_ERROR, head._buffer, head._buffer_bytes, head._offset);
    return;
  }

  // The writer's own share and this one: alone, this one means that a callback deleted it.
  const ref_ptr<int> alive = _dtoken;
  size_t left = static_cast<size_t>(done);
  while (left > 0 && !alive.is_only() && !_buffers.empty()) {
    BufferInfo* const head = _buffers.front();
    const size_t taken = std::min(left, head->left());
    left -= taken;
    head->_offset += taken;
    if (head->left() > 0) {
      const Callback cb = head->_cb;
      cb->dispatch(DATA, head->_buffer, head->_buffer_bytes, head->_offset);
      return;
    }
    const std::unique_ptr<const BufferInfo> complete(head);
    _buffers.pop_front();
    if (_buffers.empty()) stop();
    complete->tell(DATA);
  }
}
