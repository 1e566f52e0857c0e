// SPDX-License-Identifier: Apache-2.0
//
// The kinds of descriptor events and the callback that takes them.

#ifndef LIBXORP_IOEVENTS_HH_
#define LIBXORP_IOEVENTS_HH_

#include "libxorp/callback.hh"
#include "libxorp/xorpfd.hh"

// Accept counts as read, connect as write and disconnect as exception: a descriptor has at most
// one callback for each of those three.
enum IoEventType {
  IOT_READ = 0,
  IOT_WRITE = 1,
  IOT_EXCEPTION = 2,
  IOT_ACCEPT = 3,
  IOT_CONNECT = 4,
  IOT_DISCONNECT = 5,
  IOT_ANY = 6  // only for removing
};

// Called with the descriptor and the kind it was registered for.
typedef XorpCallback2<void, XorpFd, IoEventType>::RefPtr IoEventCb;

#endif  // LIBXORP_IOEVENTS_HH_
