// SPDX-License-Identifier: Apache-2.0
//
// The base header of libxorp: basic types, result codes and process-wide variables.
//
// The files in this folder declare the part of XORP's event loop library that VornSocket, a
// software line card and their hosts use, under XORP's own names, so that the same source also
// builds against a real XORP tree. Nothing here is in a namespace, as there. Whoever supplies
// the loop defines what these headers declare and do not define.
//
// Everything in libxorp belongs to the thread that runs the event loop; nothing takes a lock.

#ifndef LIBXORP_XORP_H_
#define LIBXORP_XORP_H_

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

// XORP's header does this too: a file that compiles here finds the same names in scope when it
// is compiled on a host that has the real one. Write std:: all the same.
using namespace std;  // NOLINT

typedef int xsock_t;
typedef int xfd_t;
typedef bool bool_t;

#define XORP_OK 0
#define XORP_ERROR (-1)
#define XORP_BAD_FD (-1)
#define XORP_BAD_SOCKET (-1)

#ifndef TRUE
#define TRUE (1)
#endif
#ifndef FALSE
#define FALSE (0)
#endif
#ifndef UNUSED
#define UNUSED(var) static_cast<void>(var)
#endif

// An empty base class that forbids copying.
class xorp_noncopyable {
 protected:
  xorp_noncopyable() {}
  ~xorp_noncopyable() {}

 private:
  xorp_noncopyable(const xorp_noncopyable&);
  xorp_noncopyable& operator=(const xorp_noncopyable&);
};
#define NONCOPYABLE xorp_noncopyable

// 1 while the host runs. A host that sets it to 0 on its way out bounds every wait of
// EventLoop::run() to one second.
extern int xorp_do_run;

// How many EventLoop objects are alive: 0 or 1.
extern int eventloop_instance_count;

#endif  // LIBXORP_XORP_H_
