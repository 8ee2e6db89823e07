// SPDX-License-Identifier: MIT OR GPL-2.0-only
/* Every file that a process has mapped into its memory, once a mapping. */
#include "cli/host/kernel/programs/held_file.h"

SEC("iter/task_vma")
int list(struct bpf_iter__task_vma* context) {
    struct task_struct* task = context->task;
    struct vm_area_struct* mapping = context->vma;
    /* Without both it is the end. */
    if (task == NULL || mapping == NULL) {
        return 0;
    }
    struct file* file = mapping->vm_file;
    if (file != NULL && Describe(task, file)) {
        record.head.begin = mapping->vm_start;
        record.head.end = mapping->vm_end;
        Write(context->meta->seq);
    }
    return 0;
}
