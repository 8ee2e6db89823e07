// SPDX-License-Identifier: MIT
/*
 * Runs a program and writes what it took on standard error: seconds, peak resident KiB, exit
 * status. Small on purpose: the peak of a process counts from before its exec, so that it is never
 * less than that of who started it.
 *
 *     timed PROGRAM [ARG...]
 */

#define _GNU_SOURCE
#include <spawn.h>
#include <stdio.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>

extern char** environ;

int main(int argc, char** argv) {
    struct timespec begin;
    struct timespec end;
    struct rusage usage;
    pid_t child;
    int status;
    if (argc < 2) {
        fprintf(stderr, "usage: timed PROGRAM [ARG...]\n");
        return 2;
    }
    clock_gettime(CLOCK_MONOTONIC, &begin);
    const int error = posix_spawn(&child, argv[1], NULL, NULL, argv + 1, environ);
    if (error != 0) {
        fprintf(stderr, "timed: %s: %s\n", argv[1], strerror(error));
        return 2;
    }
    if (wait4(child, &status, 0, &usage) < 0) {
        perror("timed: wait4");
        return 2;
    }
    clock_gettime(CLOCK_MONOTONIC, &end);
    fprintf(stderr, "%.6f %ld %d\n",
            (double)(end.tv_sec - begin.tv_sec) + (double)(end.tv_nsec - begin.tv_nsec) / 1e9,
            usage.ru_maxrss, WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status));
    return 0;
}
