// SPDX-License-Identifier: MIT
#include "cli/host/kernel/loading.h"

#include <errno.h>
#include <string.h>
#include <unistd.h>

#include "cli/host/kernel/programs/record.h"

/* What follows is generated, and goes by the above. */
#include <task_files.lskel.h>
#include <task_mappings.lskel.h>

/** What holds the descriptor of the other goes on; the program lives as long as the last of them.
 */
static int Iterate(int program) {
    const int link = skel_link_create(program, 0, BPF_TRACE_ITER);
    if (link < 0) {
        return -errno;
    }
    union bpf_attr attributes;
    memset(&attributes, 0, sizeof(attributes));
    attributes.iter_create.link_fd = (__u32)link;
    const int iterator = skel_sys_bpf(BPF_ITER_CREATE, &attributes, sizeof(attributes));
    const int result = iterator < 0 ? -errno : iterator;
    close(link);
    return result;
}

int vorn_iterate_files(const struct vorn_scope* scope) {
    struct task_files* files = task_files__open();
    if (files == NULL) {
        return -ENOMEM;
    }
    files->rodata->scope = *scope;
    const int error = task_files__load(files);
    const int result = error != 0 ? error : Iterate(files->progs.list.prog_fd);
    task_files__destroy(files);
    return result;
}

int vorn_iterate_mappings(const struct vorn_scope* scope) {
    struct task_mappings* mappings = task_mappings__open();
    if (mappings == NULL) {
        return -ENOMEM;
    }
    mappings->rodata->scope = *scope;
    const int error = task_mappings__load(mappings);
    const int result = error != 0 ? error : Iterate(mappings->progs.list.prog_fd);
    task_mappings__destroy(mappings);
    return result;
}
