// SPDX-License-Identifier: MIT
/*
 * Fills a process table: PROCESSES processes that hold DESCRIPTORS descriptors each, of which
 * OUTSIDE percent are sockets, pipes and files outside the volumes. Prints "ready" when all of
 * them are open and holds them until its standard input ends.
 *
 *     populate PROCESSES DESCRIPTORS OUTSIDE FOLDER [GROUP...]
 *
 * The files are made below FOLDER, one folder a process. The processes enter the
 * control groups in turn.
 */

#define _GNU_SOURCE
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

static void Check(int result, const char* what) {
    if (result < 0) {
        perror(what);
        exit(2);
    }
}

static void OpenOutside(int number) {
    int pair[2];
    switch (number % 3) {
        case 0:
            Check(socket(AF_UNIX, SOCK_STREAM, 0), "socket");
            break;
        case 1:
            Check(pipe(pair), "pipe");
            close(pair[1]);
            break;
        default:
            Check(open("/dev/null", O_RDONLY), "/dev/null");
    }
}

static void Hold(int process, int descriptors, int outside, const char* folder) {
    char path[4096];
    snprintf(path, sizeof(path), "%s/p%d", folder, process);
    Check(mkdir(path, 0755), path);
    for (int i = 0; i < descriptors; ++i) {
        if (i % 100 < outside) {
            OpenOutside(i);
            continue;
        }
        snprintf(path, sizeof(path), "%s/p%d/document-%06d.dat", folder, process, i);
        Check(open(path, O_CREAT | O_RDWR, 0644), path);
    }
}

static void Enter(const char* group) {
    char path[4096];
    snprintf(path, sizeof(path), "%s/cgroup.procs", group);
    FILE* file = fopen(path, "w");
    if (file == NULL || fprintf(file, "0\n") < 0 || fclose(file) != 0) {
        perror(path);
        exit(2);
    }
}

/* The hard limit is raised only where it is too low, as that takes a right of its own. */
static void RaiseDescriptorLimit(rlim_t wanted) {
    struct rlimit limit;
    Check(getrlimit(RLIMIT_NOFILE, &limit), "RLIMIT_NOFILE");
    limit.rlim_cur = wanted;
    if (limit.rlim_max < wanted) {
        limit.rlim_max = wanted;
    }
    Check(setrlimit(RLIMIT_NOFILE, &limit), "RLIMIT_NOFILE (see ulimit -Hn and fs.nr_open)");
}

int main(int argc, char** argv) {
    if (argc < 5) {
        fprintf(stderr, "usage: populate PROCESSES DESCRIPTORS OUTSIDE FOLDER [GROUP...]\n");
        return 2;
    }
    const int processes = atoi(argv[1]);
    const int descriptors = atoi(argv[2]);
    char** groups = argv + 5;
    const int groupCount = argc - 5;
    RaiseDescriptorLimit((rlim_t)descriptors + 64);

    int ready[2];
    Check(pipe(ready), "pipe");
    for (int i = 0; i < processes; ++i) {
        const pid_t child = fork();
        Check(child, "fork");
        if (child == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (groupCount > 0) {
                Enter(groups[i % groupCount]);
            }
            Hold(i, descriptors, atoi(argv[3]), argv[4]);
            Check((int)write(ready[1], "r", 1), "ready");
            close(ready[1]);
            pause();
            _exit(0);
        }
    }
    close(ready[1]);
    char byte;
    int count = 0;
    while (count < processes && read(ready[0], &byte, 1) == 1) {
        ++count;
    }
    if (count < processes) {
        fprintf(stderr, "populate: only %d of %d processes are ready\n", count, processes);
        return 2;
    }
    printf("ready\n");
    fflush(stdout);
    while (read(STDIN_FILENO, &byte, 1) > 0) {
    }
    return 0;
}
