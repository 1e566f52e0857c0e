/* SPDX-License-Identifier: Apache-2.0 */
/* What the C story needs of its host besides the library: hands on the cables, and time. */
#ifndef TESTS_CAPI_STORY_HOST_H_
#define TESTS_CAPI_STORY_HOST_H_

#ifdef __cplusplus
extern "C" {
#endif

/* Port n is 1/1/n. */
void host_pull_cable(unsigned int port);
void host_put_cable_back(unsigned int port);

/* A station sends a frame into the port. */
void host_send(unsigned int port, const unsigned char* frame, unsigned int bytes);

/* Takes the next frame that came out of the port and returns its size; 0 when there is none. */
unsigned int host_take(unsigned int port, unsigned char* frame, unsigned int room);

/* Lets the card do what waits, callbacks included. */
void host_run(void);

#ifdef __cplusplus
}
#endif

#endif /* TESTS_CAPI_STORY_HOST_H_ */
