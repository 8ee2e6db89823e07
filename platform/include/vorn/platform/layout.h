// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LAYOUT_H
#define VORN_PLATFORM_LAYOUT_H

/**
 * @file
 * Pins the binary layout of the platform's records, from C and from C++.
 */

#include <stddef.h>

#ifdef __cplusplus
#define VORN_PLATFORM_BEGIN extern "C" {
#define VORN_PLATFORM_END }
#define VORN_PLATFORM_ASSERT(condition) static_assert(condition, #condition)
#else
#define VORN_PLATFORM_BEGIN
#define VORN_PLATFORM_END
#define VORN_PLATFORM_ASSERT(condition) _Static_assert(condition, #condition)
#endif

#endif
