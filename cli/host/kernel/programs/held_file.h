// SPDX-License-Identifier: MIT OR GPL-2.0-only
#ifndef VORN_CLI_HOST_KERNEL_PROGRAMS_HELD_FILE_H
#define VORN_CLI_HOST_KERNEL_PROGRAMS_HELD_FILE_H

/**
 * @file
 * What the programs have in common: describing a file that a process holds.
 *
 * Compiled into each program, and run in the kernel.
 */

#include "cli/host/kernel/programs/kernel_types.h"
#include "cli/host/kernel/programs/record.h"

/* They have no names of their own for the numbers that those have. */
#include <bpf/bpf_core_read.h>
#include <bpf/bpf_helpers.h>
#include <stddef.h>

#define PATH_SIZE 4096               /* what readlink of /proc/<pid>/fd/<n> is limited to as well */
#define SUPERBLOCK_NOUSER (1u << 31) /* pipes, sockets, memory: nothing of it can be mounted */
#define FILE_BACKING (1u << 25)      /* what an overlay holds below the file that was opened */
#define TYPE_MASK 0170000
#define TYPE_SOCKET 0140000
#define TYPE_REGULAR 0100000
#define MAX_LEVEL 32 /* of PID namespaces */

/** The helpers that follow paths are lent to programs under this licence among others. */
char LICENSE[] SEC("license") = "Dual MIT/GPL";

const volatile struct vorn_scope scope = {0};

/** One reader at a time: the kernel holds the iterator's lock while a program runs. */
struct {
    struct vorn_record head;
    char path[PATH_SIZE];
} record;

/** Nesting of the reader's PID namespace, counted from 1; 0 until it is known. */
__u32 readersLevel;

/**
 * Threads share what their leader has. The kernel shows one by itself only if it has a table of its
 * own, which `/proc/<pid>/fd` leaves out, or if its leader has ended.
 */
static __always_inline int IsLeader(struct task_struct* task) {
    return task->pid == task->tgid;
}

/*
 * Each pointer that a program follows by itself has the kernel search its type information when it
 * checks the program, most of a millisecond each. So the few that are followed for every file are,
 * and all others are read by BPF_CORE_READ, which isn't checked.
 */

/** A thread's number as the reader's `/proc` names it; 0 once it has none any more. */
static __always_inline __u32 NumberOf(struct task_struct* task) {
    if (readersLevel == 0) {
        readersLevel = BPF_CORE_READ(bpf_get_current_task_btf(), thread_pid, level) + 1;
    }
    const __u32 level = readersLevel - 1;
    if (level == 0) {
        return BPF_CORE_READ(task, pid);
    }
    /* Read as a number: with a pointer kernel 6.1 reckons by constants alone. */
    struct pid* pid = BPF_CORE_READ(task, thread_pid);
    if (pid == NULL || level > MAX_LEVEL) {
        return 0;
    }
    int number = 0;
    bpf_probe_read_kernel(&number, sizeof(number),
                          (char*)pid + bpf_core_field_offset(struct pid, numbers) +
                              level * bpf_core_type_size(struct upid) +
                              bpf_core_field_offset(struct upid, nr));
    return number;
}

static __always_inline __u32 MountOf(struct file* file) {
    char* mount = (char*)BPF_CORE_READ(file, f_path.mnt) - bpf_core_field_offset(struct mount, mnt);
    int id = 0;
    bpf_probe_read_kernel(&id, sizeof(id), mount + bpf_core_field_offset(struct mount, mnt_id));
    return id;
}

/** The kernel's own test for the mark " (deleted)". */
static __always_inline int IsDeleted(struct file* file) {
    struct dentry* dentry = BPF_CORE_READ(file, f_path.dentry);
    return BPF_CORE_READ(dentry, d_hash.pprev) == NULL && BPF_CORE_READ(dentry, d_parent) != dentry;
}

static __always_inline int IsNamedLikeVolume(void) {
    const char* path = record.path;
    return path[0] == '/' && path[1] == 'v' && path[2] == 'o' && path[3] == 'l' && path[4] == 'u' &&
           path[5] == 'm' && path[6] == 'e';
}

static __always_inline int IsOnFileSystem(__u32 device) {
    for (__u32 i = 0; i < VORN_MOST_FILE_SYSTEMS && i < scope.file_system_count; ++i) {
        if (scope.file_systems[i] == device) {
            return 1;
        }
    }
    return 0;
}

/** Writes the file's path into the record; false for one that is too long. */
static __always_inline int FindPath(struct file* file) {
    const long size = bpf_d_path(&file->f_path, record.path, PATH_SIZE);
    const int found = size > 1 && size <= PATH_SIZE;
    record.head.path_length = found ? size - 1 : 0;
    return found;
}

/** An io_uring instance, which has a name, but this or that type by the kernel's release. */
static __always_inline int IsRing(struct file* file, __u32 type) {
    if ((type != 0 && type != TYPE_REGULAR) || !FindPath(file)) {
        return 0;
    }
    const char* name = record.path + sizeof("anon_inode:") - 1;
    return name[0] == '[' && name[1] == 'i' && name[2] == 'o' && name[3] == '_' && name[4] == 'u';
}

/** Whether it is asked for; its path is in the record then, where that is. */
static __always_inline int IsAskedFor(struct file* file, int isInternal) {
    record.head.path_length = 0;
    if (scope.file_system_count == 0) {
        return !isInternal && FindPath(file) && IsNamedLikeVolume();
    }
    if (IsOnFileSystem(record.head.device)) {
        if (scope.paths) {
            FindPath(file);
        }
        return 1;
    }
    const __u32 type = record.head.mode & TYPE_MASK;
    return isInternal && (type == TYPE_SOCKET ? scope.sockets != 0 : IsRing(file, type));
}

/** Fills the record; false where there is none to be written. */
static __always_inline int Describe(struct task_struct* task, struct file* file) {
    if (scope.file_system_count == 0 && !IsLeader(task)) {
        return 0;
    }
    struct inode* inode = file->f_inode;
    struct super_block* system = inode->i_sb;
    record.head.mode = inode->i_mode;
    record.head.device = system->s_dev;
    if (!IsAskedFor(file, (system->s_flags & SUPERBLOCK_NOUSER) != 0)) {
        return 0;
    }
    record.head.inode = inode->i_ino;
    record.head.pid = NumberOf(BPF_CORE_READ(task, group_leader));
    record.head.thread = NumberOf(task);
    record.head.mount = MountOf(file);
    record.head.flags = (IsDeleted(file) ? VORN_RECORD_DELETED : 0) |
                        ((file->f_mode & FILE_BACKING) != 0 ? VORN_RECORD_INNER_PATH : 0);
    return record.head.pid != 0 && record.head.thread != 0;
}

/**
 * Hands the record to the reader, in one piece. Where there is no room for it the kernel sees
 * that by itself, and comes back with the same file in the next read.
 */
static __always_inline void Write(struct seq_file* seq) {
    const __u32 length = record.head.path_length & (PATH_SIZE - 1);
    bpf_seq_write(seq, &record, sizeof(record.head) + length);
}

#endif
