/* SPDX-License-Identifier: Apache-2.0 */
/*
 * What client_host.cpp asks of a client. c_client and cpp_client do the same in C and
 * in C++; neither knows what the line card is made of.
 */
#ifndef EXAMPLES_CLIENT_H_
#define EXAMPLES_CLIENT_H_

#ifdef __cplusplus
extern "C" {
#endif

/* Starts the line card and configures it: four access ports in VLAN 10 and a trunk over a LAG of
 * two uplinks. Returns 0 when a step failed, having said which. */
int client_start(void);

/* Prints who is in VLAN 10 and what its ports have counted. Returns 0 when a step failed. */
int client_report(void);

/* Shuts the line card down. */
int client_stop(void);

#ifdef __cplusplus
}
#endif

#endif /* EXAMPLES_CLIENT_H_ */
