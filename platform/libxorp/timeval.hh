// SPDX-License-Identifier: Apache-2.0
//
// TimeVal: a point in time or a span, to the microsecond.

#ifndef LIBXORP_TIMEVAL_HH_
#define LIBXORP_TIMEVAL_HH_

#include "libxorp/xorp.h"

// Normal form: 0 <= usec() < 1,000,000; a negative span has a negative sec().
class TimeVal {
 public:
  static const int32_t ONE_MILLION = 1000000;
  static const int32_t ONE_THOUSAND = 1000;

  TimeVal() : _sec(0), _usec(0) {}
  TimeVal(int32_t sec, int32_t usec) : _sec(sec), _usec(usec) {}

  static TimeVal ZERO() { return TimeVal(0, 0); }
  static TimeVal MAXIMUM() { return TimeVal(0x7fffffff, ONE_MILLION - 1); }

  // Any number of milliseconds, negative ones too.
  static TimeVal from_ms(int ms) {
    const int sec = ms >= 0 ? ms / 1000 : -((999 - ms) / 1000);
    return TimeVal(sec, (ms - sec * 1000) * 1000);
  }

  int32_t sec() const { return _sec; }
  int32_t usec() const { return _usec; }

  // Whole milliseconds, rounded down; INT64 so that no span overflows.
  int64_t to_ms() const { return static_cast<int64_t>(_sec) * 1000 + _usec / 1000; }

  TimeVal& operator+=(const TimeVal& other) { return set(micros() + other.micros()); }
  TimeVal& operator-=(const TimeVal& other) { return set(micros() - other.micros()); }
  TimeVal operator+(const TimeVal& other) const { return TimeVal(*this) += other; }
  TimeVal operator-(const TimeVal& other) const { return TimeVal(*this) -= other; }

  bool operator==(const TimeVal& other) const { return micros() == other.micros(); }
  bool operator!=(const TimeVal& other) const { return micros() != other.micros(); }
  bool operator<(const TimeVal& other) const { return micros() < other.micros(); }
  bool operator>(const TimeVal& other) const { return micros() > other.micros(); }
  bool operator<=(const TimeVal& other) const { return micros() <= other.micros(); }
  bool operator>=(const TimeVal& other) const { return micros() >= other.micros(); }

 private:
  int64_t micros() const { return static_cast<int64_t>(_sec) * ONE_MILLION + _usec; }

  TimeVal& set(int64_t value) {
    int64_t seconds = value / ONE_MILLION;
    int64_t rest = value % ONE_MILLION;
    if (rest < 0) {
      rest += ONE_MILLION;
      --seconds;
    }
    _sec = static_cast<int32_t>(seconds);
    _usec = static_cast<int32_t>(rest);
    return *this;
  }

  int32_t _sec;
  int32_t _usec;
};

#endif  // LIBXORP_TIMEVAL_HH_
