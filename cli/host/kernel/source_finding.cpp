// SPDX-License-Identifier: MIT
#include "cli/host/kernel/source_finding.h"

#include "cli/host/kernel/kernel_iterator.h"

namespace cli {

Finding ExamineSource() {
    const KernelIterator::Opened opened =
        KernelIterator::Open(KernelIterator::Kind::kDescriptors, {});
    if (opened.iterator) {
        return {"source", State::kOk, "the kernel's iterator", ""};
    }
    return {"source", State::kOk,
            "the walk of /proc, which is slower than the kernel's iterator: " + opened.reason, ""};
}

}  // namespace cli
