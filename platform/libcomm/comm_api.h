/* SPDX-License-Identifier: Apache-2.0
 *
 * The part of libcomm that VornSocket uses: settings of an open socket. Include a header of
 * libxorp before this one; a real XORP tree needs that. */

#ifndef LIBCOMM_COMM_API_H_
#define LIBCOMM_COMM_API_H_

#ifdef __cplusplus
extern "C" {
#endif

#define COMM_SOCK_BLOCKING 1
#define COMM_SOCK_NONBLOCKING 0

/* Bytes: what a host asks for, and the least it is content with. */
#define SO_RCV_BUF_SIZE_MAX (256 * 1024)
#define SO_SND_BUF_SIZE_MAX (256 * 1024)
#define SO_RCV_BUF_SIZE_MIN (48 * 1024)
#define SO_SND_BUF_SIZE_MIN (48 * 1024)

/* Makes the socket wait (not 0) or not (0). 0, or -1 when the system refuses. */
int comm_sock_set_blocking(int sock, int is_blocking);

/* Asks for a kernel buffer of `desired_bufsize` bytes and returns the size that the kernel
 * accepted, which need not be the size that it keeps: Linux accepts any and clamps in silence.
 *
 * If the kernel refuses that size, the largest one that it does accept is searched for, to within
 * about a kilobyte. A result below `min_bufsize` is reported as -1; with a `min_bufsize` of 0 or
 * less the result is returned whatever it is. */
int comm_sock_set_rcvbuf(int sock, int desired_bufsize, int min_bufsize);
int comm_sock_set_sndbuf(int sock, int desired_bufsize, int min_bufsize);

/* The errno of the last function above that failed. */
int comm_get_last_error(void);

#ifdef __cplusplus
}
#endif

#endif /* LIBCOMM_COMM_API_H_ */
