// SPDX-License-Identifier: MIT OR GPL-2.0-only
/* Every file that a process has a descriptor of. */
#include "cli/host/kernel/programs/held_file.h"

SEC("iter/task_file")
int list(struct bpf_iter__task_file* context) {
    struct task_struct* task = context->task;
    struct file* file = context->file;
    /* Without both it is the end. */
    if (task != NULL && file != NULL && Describe(task, file)) {
        record.head.descriptor = context->fd;
        Write(context->meta->seq);
    }
    return 0;
}
