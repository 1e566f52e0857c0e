// SPDX-License-Identifier: Apache-2.0
//
// A check for whoever writes a host: runs the rules of docs/host.md against the host functions of
// the process that it is linked into, and prints a line for each.
//
//   my_host_check [--library <file>] [<unit>/<slot>/<port>...]
//
//   <file>                  loads this libvornlcapi.so.0, which has to find the host's symbols, and
//                           goes through it as well
//   <unit>/<slot>/<port>    addresses to look at beside 0/0/0 to 7/31/255
//
// A program that is made of a host and this library alone gets its main(). It changes settings of
// the first and last port, makes and deletes a VLAN and a LAG, and takes a link down and up, all of
// which it undoes: run it where nobody depends on the line card.
#ifndef PLATFORM_HOST_CHECK_HOST_CHECK_H_
#define PLATFORM_HOST_CHECK_HOST_CHECK_H_

// Runs the rules with the arguments of main(), on standard output. Returns an exit status: 0 when
// the host holds to every rule that could be tried, 1 when it breaks one, 2 for wrong arguments.
// REQUIRES: nobody has started the line card. It is ended afterwards.
int vorn_host_check(int argc, char** argv);

// Delivers the events that wait, as the host's event loop would. A host defines it so that the
// rules about callbacks can be tried; the definition that this library has returns false, which
// says that they cannot.
bool vorn_host_check_deliver_events();

#endif  // PLATFORM_HOST_CHECK_HOST_CHECK_H_
