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

}  // namespace

const unsigned int VornSocket::max_socket_buffer_size = 4096;

VornSocket::VornSocket(EventLoop& loop)
    : event_loop_(loop),
      descriptor_(0),
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
  // The constructor's initialize() has replaced the 0, so 0 here would be a descriptor of ours.
  if (descriptor_ >= 0) close(descriptor_);
}

void VornSocket::initialize() {
  // The descriptor is 0 and nobody's until the first call has opened one.
  const int earlier = initialized_ || descriptor_ != 0 ? static_cast<int>(descriptor_) : -1;

  const int opened = ::socket(AF_INET, SOCK_DGRAM, 0);
  const bool non_blocking = opened >= 0 && comm_sock_set_blocking(opened, 0) == 0;
  if (opened >= 0 && !non_blocking) print("failed to set socket non-blocking");
  if (!non_blocking && reader_ != nullptr) {
    // The reader keeps the descriptor that it knows.
    if (opened >= 0) close(opened);
    return;
  }

  if (non_blocking) {
    if (comm_sock_set_rcvbuf(opened, kKernelBufferBytes, kLeastKernelBufferBytes) <
        kLeastKernelBufferBytes) {
      print("failed to set socket recv_buf");
    }
    if (comm_sock_set_sndbuf(opened, kKernelBufferBytes, kLeastKernelBufferBytes) <
        kLeastKernelBufferBytes) {
      print("failed to set socket snd_buf");
    }
  }

  // The reader leaves the loop before its descriptor is closed.
  cleanup();
  if (earlier >= 0) close(earlier);
  descriptor_ = XorpFd(opened);
  if (!non_blocking) return;

  reader_ = new AsyncFileReader(event_loop_, descriptor_, kPriority);
  writer_ = new AsyncFileWriter(event_loop_, descriptor_, kWriterCoalesceCount, kPriority);
  if (reader_ != nullptr && writer_ != nullptr) initialized_ = true;
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
