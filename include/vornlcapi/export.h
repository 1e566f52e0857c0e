/* SPDX-License-Identifier: Apache-2.0 */
/* Marks what libvornlcapi exports; everything else in the library is hidden. The library's own
 * build says what the mark is. */
#ifndef VORNLCAPI_EXPORT_H_
#define VORNLCAPI_EXPORT_H_

#if defined(VORN_EXPORT)
/* as the build says */
#elif defined(__GNUC__)
#define VORN_EXPORT __attribute__((visibility("default")))
#else
#define VORN_EXPORT
#endif

#endif /* VORNLCAPI_EXPORT_H_ */
