// SPDX-License-Identifier: Apache-2.0
//
// For a program that watches its operator new.
#ifndef TESTS_SOFTCARD_OWN_NEW_H_
#define TESTS_SOFTCARD_OWN_NEW_H_

namespace softcard {

// Called ahead of each allocation; the program defines it. May throw std::bad_alloc: then nothing
// is allocated.
void before_allocation();

}  // namespace softcard

#endif  // TESTS_SOFTCARD_OWN_NEW_H_
