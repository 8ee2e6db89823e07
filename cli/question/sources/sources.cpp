// SPDX-License-Identifier: MIT
#include "cli/question/sources/sources.h"

#include "cli/failure.h"
#include "cli/question/sources/iterator_source.h"
#include "cli/question/sources/walk_source.h"

namespace cli {

std::unique_ptr<RecordSource> MakeSource(SourceKind kind) {
    if (kind == SourceKind::kWalk) {
        return std::make_unique<WalkSource>();
    }
    KernelIterator::Opened opened = KernelIterator::Open(KernelIterator::Kind::kDescriptors, {});
    if (opened.iterator) {
        return std::make_unique<IteratorSource>(std::move(opened.iterator));
    }
    if (kind == SourceKind::kIterator) {
        throw Failure("can't take the kernel's iterator: " + opened.reason);
    }
    return std::make_unique<WalkSource>();
}

}  // namespace cli
