/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A program that links neither library and loads both: first the host, whose symbols the library
 * then finds. Prints what went wrong and ends with 1 then.
 */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

/* Function and object pointers are converted byte by byte, as ISO C has no cast between them. */
static int find(void* library, const char* name, void* function) {
  void* const found = dlsym(library, name);
  if (found == NULL) fprintf(stderr, "%s\n", dlerror());
  memcpy(function, &found, sizeof(found));
  return found != NULL;
}

int main(void) {
  int (*start)(int*);
  int (*stop)(void);
  int (*create_vlan)(unsigned int);
  int (*fail)(const char*, unsigned int);
  const char* (*last_refusal)(void);
  int ports = 0;
  void* library;
  void* const host = dlopen(VORN_HOST, RTLD_NOW | RTLD_GLOBAL);
  if (host == NULL || (library = dlopen(VORN_LIBRARY, RTLD_NOW)) == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  if (!find(library, "ctype_vorn_lcmgr_api_init", &start) ||
      !find(library, "ctype_vorn_lcmgr_api_terminate", &stop) ||
      !find(library, "ctype_vorn_create_vlan", &create_vlan) ||
      !find(host, "softcard_fail", &fail) || !find(host, "softcard_last_refusal", &last_refusal)) {
    return 1;
  }
  if (start(&ports) != 1 || ports != 52 || create_vlan(10) != 1) {
    fprintf(stderr, "the card does not come up: %s\n", last_refusal());
    return 1;
  }
  if (fail("create_vlan", 1) != 1 || create_vlan(20) != 0 || create_vlan(20) != 1) {
    fprintf(stderr, "a failure on purpose does not come\n");
    return 1;
  }
  return stop() == 1 ? 0 : 1;
}
