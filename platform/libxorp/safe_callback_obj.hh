// SPDX-License-Identifier: Apache-2.0
//
// CallbackSafeObject: a base class for objects that may die before the callbacks made from them.

#ifndef LIBXORP_SAFE_CALLBACK_OBJ_HH_
#define LIBXORP_SAFE_CALLBACK_OBJ_HH_

#include "libxorp/ref_ptr.hh"

// A callback made by callback() from an object of a class derived from this one does nothing,
// and returns a default value, once that object has been destroyed.
class CallbackSafeObject {
 public:
  CallbackSafeObject() : _alive(new bool(true)) {}
  CallbackSafeObject(const CallbackSafeObject&) : _alive(new bool(true)) {}
  CallbackSafeObject& operator=(const CallbackSafeObject&) { return *this; }
  virtual ~CallbackSafeObject() { *_alive = false; }

  // True while the object lives; outlives it for whoever keeps a share.
  const ref_ptr<bool>& alive() const { return _alive; }

 private:
  ref_ptr<bool> _alive;
};

#endif  // LIBXORP_SAFE_CALLBACK_OBJ_HH_
