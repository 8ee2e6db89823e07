// SPDX-License-Identifier: MIT OR GPL-2.0-only
#ifndef VORN_CLI_HOST_KERNEL_PROGRAMS_KERNEL_TYPES_H
#define VORN_CLI_HOST_KERNEL_PROGRAMS_KERNEL_TYPES_H

/**
 * @file
 * The few members of the kernel's structures that the programs read. Where each lies is what the
 * running kernel's own type information says when a program is loaded.
 */

#include <linux/bpf.h>
#include <linux/types.h>

#define KERNEL_TYPE __attribute__((preserve_access_index))

struct seq_file;

struct super_block {
    unsigned long s_flags;
    __u32 s_dev;
} KERNEL_TYPE;

struct inode {
    __u16 i_mode;
    unsigned long i_ino;
    struct super_block* i_sb;
} KERNEL_TYPE;

struct hlist_bl_node {
    struct hlist_bl_node** pprev;
} KERNEL_TYPE;

struct dentry {
    struct hlist_bl_node d_hash;
    struct dentry* d_parent;
    struct super_block* d_sb;
} KERNEL_TYPE;

struct vfsmount {
    int mnt_flags;
} KERNEL_TYPE;

struct mount {
    struct vfsmount mnt;
    int mnt_id;
} KERNEL_TYPE;

struct path {
    struct vfsmount* mnt;
    struct dentry* dentry;
} KERNEL_TYPE;

struct file {
    struct path f_path;
    struct inode* f_inode;
    unsigned int f_mode;
} KERNEL_TYPE;

struct vm_area_struct {
    unsigned long vm_start;
    unsigned long vm_end;
    struct file* vm_file;
} KERNEL_TYPE;

struct upid {
    int nr;
} KERNEL_TYPE;

struct pid {
    unsigned int level;
    struct upid numbers[1];
} KERNEL_TYPE;

struct task_struct {
    int pid;
    int tgid;
    struct task_struct* group_leader;
    struct pid* thread_pid;
} KERNEL_TYPE;

struct bpf_iter_meta {
    struct seq_file* seq;
} KERNEL_TYPE;

/** What the iterators call their programs with. */
struct bpf_iter__task_file {
    struct bpf_iter_meta* meta;
    struct task_struct* task;
    __u32 fd;
    struct file* file;
} KERNEL_TYPE;

struct bpf_iter__task_vma {
    struct bpf_iter_meta* meta;
    struct task_struct* task;
    struct vm_area_struct* vma;
} KERNEL_TYPE;

#endif
