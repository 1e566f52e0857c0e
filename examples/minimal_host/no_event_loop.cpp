// SPDX-License-Identifier: Apache-2.0
//
// For a host that has no XORP: what the library's VornSocket refers to, so that the loader finds
// every symbol. Nobody may make a VornSocket in such a process. A host that has XORP links that
// instead of this file.

#include <cstdlib>

#include "libxorp/asyncio.hh"

#include "libcomm/comm_api.h"

AsyncFileOperator::~AsyncFileOperator() {}
std::string AsyncFileOperator::toString() const { return std::string(); }
AsyncFileReader::AsyncFileReader(EventLoop& loop, XorpFd fd, int) : AsyncFileOperator(loop, fd) {
  std::abort();
}
AsyncFileReader::~AsyncFileReader() {}
void AsyncFileReader::add_buffer(uint8_t*, size_t, const Callback&) {}
bool AsyncFileReader::start() { return false; }
void AsyncFileReader::stop() {}
void AsyncFileReader::flush_buffers() {}
std::string AsyncFileReader::toString() const { return std::string(); }
AsyncFileWriter::AsyncFileWriter(EventLoop& loop, XorpFd fd, uint32_t, int)
    : AsyncFileOperator(loop, fd) {
  std::abort();
}
AsyncFileWriter::~AsyncFileWriter() {}
bool AsyncFileWriter::start() { return false; }
void AsyncFileWriter::stop() {}
void AsyncFileWriter::flush_buffers() {}
std::string AsyncFileWriter::toString() const { return std::string(); }
ref_counter_pool& ref_counter_pool::instance() { std::abort(); }
int32_t ref_counter_pool::new_counter() { return 0; }
int32_t ref_counter_pool::decr_counter(int32_t) { return 0; }
int comm_sock_set_blocking(int, int) { return -1; }
int comm_sock_set_rcvbuf(int, int, int) { return -1; }
int comm_sock_set_sndbuf(int, int, int) { return -1; }
