// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_KERNEL_LOADING_H
#define VORN_CLI_HOST_KERNEL_LOADING_H

/**
 * @file
 * Loads the programs. In C, as what is generated for each of them is.
 *
 * The kernel itself fits a program to its structures: the command neither reads the kernel's type
 * information, megabytes of it, nor links what does. It takes some milliseconds when the kernel
 * meets a program for the first time, about one after that.
 *
 * Each function gives the descriptor of an iterator at its beginning, to be read once, to its end.
 * Nothing else stays, and with that descriptor the program goes. Negative is an errno value.
 */

#ifdef __cplusplus
extern "C" {
#endif

struct vorn_scope;

/** Writes a vorn_record for each descriptor that leads to a file. */
int vorn_iterate_files(const struct vorn_scope* scope);

/** Writes a vorn_record for each mapping of a file. */
int vorn_iterate_mappings(const struct vorn_scope* scope);

#ifdef __cplusplus
}
#endif

#endif
