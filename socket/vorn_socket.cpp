// SPDX-License-Identifier: Apache-2.0
//
// VornSocket on XORP's reader. This file and its header stay within C++11: a host may compile
// them against XORP's own headers, which accept no more than C++14.

#include "vornlcapi/socket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <iostream>
#include <memory>
#include <new>

#include "libcomm/comm_api.h"

namespace {

const int kKernelBufferBytes = 262144;
const int kLeastKernelBufferBytes = 49152;
const unsigned int kLargestReadBytes = 4096;
const unsigned int kWriterCoalesceCount = 1;
const int kPriority = 4;

void print(const char* message) { std::cout << message << std::endl; }

// A descriptor that is closed unless it is released to the socket. Negative: there is none.
class OpenDescriptor {
 public:
  explicit OpenDescriptor(int descriptor) : descriptor_(descriptor) {}
  ~OpenDescriptor() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  OpenDescriptor(const OpenDescriptor&) = delete;
  OpenDescriptor& operator=(const OpenDescriptor&) = delete;

  int get() const { return descriptor_; }
  int release() {
    const int released = descriptor_;
    descriptor_ = -1;
    return released;
  }

 private:
  int descriptor_;
};

}  // namespace

const unsigned int VornSocket::max_socket_buffer_size = 4096;

VornSocket::VornSocket(EventLoop& loop)
    : event_loop_(loop),
      descriptor_(-1),
      reader_(nullptr),
      writer_(nullptr),
      initialized_(false),
      buffers_(),
      io_read_callback_(nullptr),
      read_user_data_(nullptr),
      io_write_callback_(nullptr),
      write_user_data_(nullptr) {
  initialize();
}

VornSocket::~VornSocket() {
  cleanup();
  for (const auto& buffer : buffers_) delete[] buffer.first;
  if (descriptor_ >= 0) close(descriptor_);
}

void VornSocket::initialize() {
  OpenDescriptor opened(::socket(AF_INET, SOCK_DGRAM, 0));
  const bool non_blocking = opened.get() >= 0 && comm_sock_set_blocking(opened.get(), 0) == 0;
  if (opened.get() >= 0 && !non_blocking) print("failed to set socket non-blocking");
  // The reader keeps the descriptor that it knows.
  if (!non_blocking && reader_ != nullptr) return;

  if (non_blocking) {
    if (comm_sock_set_rcvbuf(opened.get(), kKernelBufferBytes, kLeastKernelBufferBytes) <
        kLeastKernelBufferBytes) {
      print("failed to set socket recv_buf");
    }
    if (comm_sock_set_sndbuf(opened.get(), kKernelBufferBytes, kLeastKernelBufferBytes) <
        kLeastKernelBufferBytes) {
      print("failed to set socket snd_buf");
    }
  }

  // The reader leaves the loop before its descriptor is closed.
  cleanup();
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_.clear();
  if (non_blocking) {
    // Members are set once nothing throws any more: a constructor that throws destroys nothing.
    const XorpFd descriptor(opened.get());
    std::unique_ptr<AsyncFileReader> reader(
        new AsyncFileReader(event_loop_, descriptor, kPriority));
    writer_ = new AsyncFileWriter(event_loop_, descriptor, kWriterCoalesceCount, kPriority);
    reader_ = reader.release();
    initialized_ = true;
  }
  descriptor_ = XorpFd(opened.release());
}

bool VornSocket::bind_address(const char* /*address*/, unsigned short port) {
  sockaddr_in local = sockaddr_in();
  local.sin_family = AF_INET;
  local.sin_port = htons(port);
  local.sin_addr.s_addr = htonl(INADDR_ANY);
  return ::bind(descriptor_, reinterpret_cast<const sockaddr*>(&local), sizeof local) >= 0;
}

unsigned char* VornSocket::create_buffer(unsigned int size) {
  if (size == 0) return nullptr;
  std::unique_ptr<unsigned char[]> buffer(new (std::nothrow) unsigned char[size]);
  if (!buffer) return nullptr;
  buffers_[buffer.get()] = size;
  return buffer.release();
}

bool VornSocket::read(unsigned int size) {
  if (size > kLargestReadBytes - 1) size = kLargestReadBytes;
  unsigned char* const buffer = create_buffer(size);
  if (buffer == nullptr) return false;
  reader_->add_buffer(buffer, size, callback(this, &VornSocket::read_cb));
  if (!reader_->running()) reader_->start();
  return true;
}

void VornSocket::read_cb(AsyncFileOperator::Event event, const unsigned char* buffer,
                         std::size_t buffer_bytes, std::size_t offset) {
  if (event != AsyncFileOperator::DATA) return;
  if (io_read_callback_ == nullptr) {
    print("Warning: io_read_callback is empty");
    return;
  }
  // The function may destroy this socket: no member is touched after the call. No read is longer
  // than 4096, so the counts fit.
  io_read_callback_(buffer, static_cast<unsigned int>(buffer_bytes),
                    static_cast<unsigned int>(offset), read_user_data_);
}

bool VornSocket::write() { return true; }

void VornSocket::write_cb(AsyncFileOperator::Event /*event*/, const unsigned char* buffer,
                          std::size_t buffer_bytes, std::size_t offset) {
  if (io_write_callback_ == nullptr) return;
  io_write_callback_(buffer, static_cast<unsigned int>(buffer_bytes),
                     static_cast<unsigned int>(offset), write_user_data_);
}

bool VornSocket::register_io_callback(bool is_read,
                                      void (*function)(const unsigned char*, unsigned int,
                                                       unsigned int, void*),
                                      void* user_data) {
  if (function == nullptr) return false;
  if (is_read) {
    io_read_callback_ = function;
    read_user_data_ = user_data;
  } else {
    io_write_callback_ = function;
    write_user_data_ = user_data;
  }
  return true;
}

void VornSocket::cleanup() {
  delete reader_;
  reader_ = nullptr;
  delete writer_;
  writer_ = nullptr;
}
