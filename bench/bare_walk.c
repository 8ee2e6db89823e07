// SPDX-License-Identifier: MIT
/*
 * The physical limit of an enumeration: list /proc, list each descriptor folder, read each link,
 * look once at each file that is kept. Prints the seconds that this took and what was found.
 *
 * With --services it also does, for each file kept, what finding a service can't do without when
 * no unit file has a name: open, read and close the control-group file, test both unit paths.
 */

#define _GNU_SOURCE
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

enum { LISTING_SIZE = 1 << 18 };

static int withServices;
static long descriptors;
static long kept;

struct linux_dirent64 {
    ino64_t d_ino;
    off64_t d_off;
    unsigned short d_reclen;
    unsigned char d_type;
    char d_name[];
};

typedef void (*Visit)(const char* directory, const char* name);

static void VisitNumbers(const char* directory, char* listing, Visit visit) {
    const int folder = open(directory, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) {
        return;
    }
    long length;
    while ((length = syscall(SYS_getdents64, folder, listing, LISTING_SIZE)) > 0) {
        for (long at = 0; at < length;) {
            const struct linux_dirent64* entry = (const struct linux_dirent64*)(listing + at);
            at += entry->d_reclen;
            if (entry->d_name[0] >= '0' && entry->d_name[0] <= '9') {
                visit(directory, entry->d_name);
            }
        }
    }
    close(folder);
}

static void LookAtService(const char* directory) {
    static char text[4096];
    char path[64];
    snprintf(path, sizeof(path), "%.*s/cgroup", (int)(strlen(directory) - 4), directory);
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file >= 0) {
        if (read(file, text, sizeof(text)) < 0) {
            perror(path);
        }
        close(file);
    }
    access("/usr/local/lib/systemd/system/system.slice", F_OK);
    access("/usr/lib/systemd/system/system.slice", F_OK);
}

static void VisitDescriptor(const char* directory, const char* name) {
    static char target[4096];
    char link[64];
    snprintf(link, sizeof(link), "%s%s", directory, name);
    const ssize_t length = readlink(link, target, sizeof(target) - 1);
    ++descriptors;
    if (length <= 0) {
        return;
    }
    target[length] = '\0';
    if (strncmp(target, "/volume", 7) != 0) {
        return;
    }
    struct statx status;
    statx(AT_FDCWD, target, AT_STATX_DONT_SYNC, STATX_TYPE, &status);
    ++kept;
    if (withServices) {
        LookAtService(directory);
    }
}

static void VisitProcess(const char* directory, const char* name) {
    static char listing[LISTING_SIZE];
    char folder[64];
    snprintf(folder, sizeof(folder), "%s%s/fd/", directory, name);
    VisitNumbers(folder, listing, VisitDescriptor);
}

int main(int argc, char** argv) {
    static char listing[LISTING_SIZE];
    withServices = argc > 1 && strcmp(argv[1], "--services") == 0;
    struct timespec begin;
    struct timespec end;
    clock_gettime(CLOCK_MONOTONIC, &begin);
    VisitNumbers("/proc/", listing, VisitProcess);
    clock_gettime(CLOCK_MONOTONIC, &end);
    printf("%.6f %ld %ld\n",
           (double)(end.tv_sec - begin.tv_sec) + (double)(end.tv_nsec - begin.tv_nsec) / 1e9,
           descriptors, kept);
    return 0;
}
