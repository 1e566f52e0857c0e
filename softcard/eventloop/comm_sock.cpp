// SPDX-License-Identifier: Apache-2.0
//
// Settings of an open socket.

#include <fcntl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "libxorp/xorp.h"
// Behind a libxorp header.
#include "libcomm/comm_api.h"

namespace {

const int kSearchPrecisionBytes = 1024;

int last_error = 0;

// Reports the errno of a refused call.
int refused(const char* what, int sock) {
  last_error = errno;
  std::fprintf(stderr, "socket %d: %s: %s\n", sock, what, std::strerror(last_error));
  return XORP_ERROR;
}

bool accepts(int sock, int option, int bytes) {
  return setsockopt(sock, SOL_SOCKET, option, &bytes, sizeof bytes) == 0;
}

int set_buffer(int sock, int option, const char* what, int desired_bytes, int least_bytes) {
  if (accepts(sock, option, desired_bytes)) return desired_bytes;
  last_error = errno;

  int step = desired_bytes / 2;
  int bytes = desired_bytes - step;
  while (bytes > 0) {
    step = std::max(step / 2, 1);
    if (accepts(sock, option, bytes)) {
      if (step < kSearchPrecisionBytes) break;
      bytes += step;
    } else {
      last_error = errno;
      bytes -= step;
    }
  }
  bytes = std::max(bytes, 0);
  if (bytes < least_bytes) {
    std::fprintf(stderr, "socket %d: %s: %d bytes at most, %d are needed\n", sock, what, bytes,
                 least_bytes);
    return XORP_ERROR;
  }
  return bytes;
}

}  // namespace

int comm_sock_set_blocking(int sock, int is_blocking) {
  const int flags = fcntl(sock, F_GETFL);
  if (flags < 0) return refused("reading the status flags", sock);
  const int wanted = is_blocking != 0 ? flags & ~O_NONBLOCK : flags | O_NONBLOCK;
  if (fcntl(sock, F_SETFL, wanted) < 0) return refused("writing the status flags", sock);
  return XORP_OK;
}

int comm_sock_set_rcvbuf(int sock, int desired_bufsize, int min_bufsize) {
  return set_buffer(sock, SO_RCVBUF, "receive buffer", desired_bufsize, min_bufsize);
}

int comm_sock_set_sndbuf(int sock, int desired_bufsize, int min_bufsize) {
  return set_buffer(sock, SO_SNDBUF, "send buffer", desired_bufsize, min_bufsize);
}

int comm_get_last_error(void) { return last_error; }
