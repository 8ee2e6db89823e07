// SPDX-License-Identifier: MIT
/* For builds without the programs. */
#include <errno.h>

#include "cli/host/kernel/loading.h"

int vorn_iterate_files(const struct vorn_scope* scope) {
    (void)scope;
    return -ENOTSUP;
}

int vorn_iterate_mappings(const struct vorn_scope* scope) {
    (void)scope;
    return -ENOTSUP;
}
