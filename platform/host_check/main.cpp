// SPDX-License-Identifier: Apache-2.0

#include "host_check/host_check.h"

int main(int argc, char** argv) { return vorn_host_check(argc, argv); }
