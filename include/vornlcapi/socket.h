// SPDX-License-Identifier: Apache-2.0
//
// VornSocket: a UDP socket that hands received datagrams to a function from the host's XORP event
// loop.
//
//   VornSocket socket(loop);
//   socket.bind_address("", 5000);
//   socket.register_io_callback(true, on_data, &state);
//   socket.read(512);
//   while (running) loop.run();
//
// Everything happens on the thread that runs the loop; nothing takes a lock. Make no VornSocket
// in a static initialiser, and destroy it before its EventLoop.
//
// What a read delivers
// --------------------
// A read queues a buffer of fixed size. The buffer stays in use until it is full:
//
// - The registered function is called once for each datagram, with the start of the buffer, its
//   size, and the *total* number of bytes in it so far. A datagram that does not fill the buffer
//   is followed by the next one behind it in the same buffer, with no further read: sizes 3 and 4
//   into a read(10) give calls with 3 and 7. Where a datagram starts is known only from the total
//   of the call before.
// - When the total reaches the size, the buffer is done. If no other is queued, the socket stops
//   listening, datagrams wait in the kernel, and a further read, from inside the function too,
//   goes on with them.
// - A datagram longer than the room left is cut, without a sign: it looks like an exact fill.
//   Only fixed-size datagrams of exactly the size that was read give one read per datagram.
// - A read from every call queues a buffer each time, while short datagrams still go into the
//   first: memory grows and nothing is delivered sooner. Read again when the total reaches the
//   size. No buffer is freed before the socket is destroyed, so bytes that were delivered stay
//   readable until then.
// - An empty datagram is dropped in silence.
// - An error (the refusal of a peer, on a descriptor that somebody connected) is dropped in
//   silence too, and the socket is deaf until the next read, which goes on with the old buffer
//   before it uses its own.
//
// The function may call the socket and may also destroy it, buffers included. Real XORP loops
// watch descriptors below 1024 only: a host that holds that many open must not make sockets.

#ifndef VORNLCAPI_SOCKET_H_
#define VORNLCAPI_SOCKET_H_

#include <cstddef>
#include <map>

// XORP's header, or our declaration of it: XORP's own accepts C++11 and C++14 only.
#include "libxorp/asyncio.hh"
#include "vornlcapi/export.h"

class VORN_EXPORT VornSocket {
 public:
  // The largest read in bytes: 4096.
  static const unsigned int max_socket_buffer_size;

  // Opens the socket as initialize() does, without saying whether that worked. `loop` outlives
  // the socket.
  explicit VornSocket(EventLoop& loop);

  // Drops pending reads without calling the registered function, frees every buffer and closes
  // the descriptor.
  ~VornSocket();

  // Opens a new UDP socket, not bound, and puts a reader and a writer on it; registered functions
  // stay. Asks the kernel for 262144 bytes of receive and send buffer, and prints a warning to
  // standard output when less than 49152 are granted.
  //
  // If the socket cannot be opened (no message) or cannot be made non-blocking (a message),
  // there is no reader, and read() must not be called.
  //
  // The constructor has called this once. A further call that succeeds closes the earlier
  // descriptor and drops pending reads without calling anyone. A further call that fails changes
  // nothing as long as there is a reader: it, bind_address() and read() go on with the earlier
  // descriptor. An exception (memory is short, or the host's loop throws) passes through and leaves
  // no descriptor open; a socket that it leaves behind has neither reader nor descriptor, and may
  // be initialized again.
  void initialize();

  // Binds to `port` (host byte order; 0: any free one) on every local address. `address` is
  // ignored and may be null. False if bind(2) refuses.
  bool bind_address(const char* address, unsigned short port);

  // Returns `size` bytes that live as long as the socket; null for a size of 0 or when memory is
  // short.
  unsigned char* create_buffer(unsigned int size);

  // Queues one receive buffer of `size` bytes, 4096 if it is more, and starts listening. False
  // for a size of 0 or when memory is short; true otherwise, even if the loop refuses the
  // descriptor. Needs the reader that a successful initialize() made: without one, or after
  // cleanup(), the call is invalid.
  bool read(unsigned int size);

  // The reader calls this: hands a data event to the registered read function and drops all
  // others. Prints a warning if no function is registered, and the data is lost. `offset` is the
  // number of bytes in the buffer.
  void read_cb(AsyncFileOperator::Event event, const unsigned char* buffer,
               std::size_t buffer_bytes, std::size_t offset);

  // Sends nothing and returns true: there is no write path.
  bool write();

  // Hands any event to the registered write function, if there is one. The socket itself never
  // calls it.
  void write_cb(AsyncFileOperator::Event event, const unsigned char* buffer,
                std::size_t buffer_bytes, std::size_t offset);

  // Registers the function for received data (`is_read`) or for written data, in place of an
  // earlier one. It gets the buffer, its size in bytes, the number of bytes in it, and
  // `user_data`. False for a null function, and an earlier one stays.
  bool register_io_callback(bool is_read,
                            void (*function)(const unsigned char*, unsigned int, unsigned int,
                                             void*),
                            void* user_data);

  // Deletes the reader and the writer; pending reads are dropped without calling anyone.
  // Descriptor, buffers and registered functions stay. Only initialize() makes read() valid again.
  void cleanup();

 private:
  typedef void (*IoCallback)(const unsigned char*, unsigned int, unsigned int, void*);

  VornSocket(const VornSocket&) = delete;
  VornSocket& operator=(const VornSocket&) = delete;

  EventLoop& event_loop_;
  XorpFd descriptor_;
  AsyncFileReader* reader_;                         // owned
  AsyncFileWriter* writer_;                         // owned
  bool initialized_;                                // set once both exist, never cleared
  std::map<unsigned char*, unsigned int> buffers_;  // owned; address to size in bytes
  IoCallback io_read_callback_;
  void* read_user_data_;
  IoCallback io_write_callback_;
  void* write_user_data_;
};

#endif  // VORNLCAPI_SOCKET_H_
