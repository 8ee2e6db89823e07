// SPDX-License-Identifier: MIT
#include "cli/question/holders/holdings.h"

#include <algorithm>
#include <system_error>

#include "cli/failure.h"

namespace cli {
namespace {

/** One pass, or why there is none. */
struct Pass {
    std::optional<Holdings> holdings;
    std::string reason;
};

Pass Take(const KernelQuestion& question, KernelIterator::Kind kind,
          const KernelIterator::Scope& scope, Decision& decision) {
    const auto [iterator, reason] = question.open(kind, scope);
    if (!iterator) {
        return {std::nullopt, reason};
    }
    auto holdings = Holdings::Read(*iterator, decision);
    const bool failed = !holdings;
    return {std::move(holdings), failed ? "it can't be read to its end" : ""};
}

KernelIterator::Scope ScopeOf(const Targets& targets, Wanted wanted, bool sockets) {
    KernelIterator::Scope scope;
    scope.fileSystems.assign(targets.Devices().begin(), targets.Devices().end());
    scope.sockets = sockets;
    // One name a process is sooner asked for than all are told.
    scope.paths = wanted == Wanted::kNames || targets.NeedsNames();
    return scope;
}

}  // namespace

std::optional<Holdings> Holdings::Read(KernelIterator& iterator, Decision& decision) {
    Holdings holdings;
    try {
        for (std::string records; iterator.ReadRecords(records);) {
            std::string_view rest = holdings.portions_.emplace_back(std::move(records));
            while (!rest.empty()) {
                const HeldFile file = TakeHeldFile(rest);
                if (decision.Take(file)) {
                    return holdings;
                }
                holdings.files_[file.pid].push_back(file);
            }
        }
    } catch (const std::system_error&) {
        return std::nullopt;
    }
    return holdings;
}

const std::vector<HeldFile>& Holdings::Of(pid_t pid) const {
    static const std::vector<HeldFile> kNone;
    const auto found = files_.find(pid);
    return found == files_.end() ? kNone : found->second;
}

bool Holdings::HasOwn(pid_t pid, pid_t thread) const {
    const auto& files = Of(pid);
    return std::any_of(files.begin(), files.end(),
                       [&](const HeldFile& file) { return file.thread == thread; });
}

KernelHoldings AskKernel(const KernelQuestion& question, const Workers& workers,
                         Decision& decision) {
    if (question.source == SourceKind::kWalk) {
        return {};
    }
    const Targets& targets = question.targets;
    Pass descriptors;
    Pass mappings;
    // Of what is mapped from an overlay the kernel may tell the layer below alone.
    const size_t passes = targets.AnyOverlay() ? 1 : 2;
    workers.ForEach(passes, [&](size_t i) {
        if (decision.IsMade()) {
            return;
        }
        (i == 0 ? descriptors : mappings) =
            i == 0 ? Take(question, KernelIterator::Kind::kDescriptors,
                          ScopeOf(targets, question.wanted, question.sockets), decision)
                   : Take(question, KernelIterator::Kind::kMappings,
                          ScopeOf(targets, Wanted::kNames, false), decision);
    });
    if (decision.IsMade()) {
        return {};
    }
    for (const Pass& pass : {std::cref(descriptors), std::cref(mappings)}) {
        if (question.source == SourceKind::kIterator && !pass.reason.empty()) {
            throw Failure("can't take the kernel's iterator: " + pass.reason);
        }
    }
    return {std::move(descriptors.holdings), std::move(mappings.holdings)};
}

}  // namespace cli
