// SPDX-License-Identifier: MIT
#include "cli/host/kernel/kernel_iterator.h"

#include <sys/sysmacros.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <system_error>

#include "cli/host/kernel/loading.h"
#include "cli/host/kernel/programs/record.h"
#include "cli/host/kernel/unavailable.h"

namespace cli {
namespace {

/** More than a read gives, which is eight pages at most, where these have 4 KiB. */
constexpr size_t kReadSize = size_t{64} * 1024;

vorn_record HeadAt(const char* record) {
    vorn_record head;
    std::memcpy(&head, record, sizeof(head));
    return head;
}

constexpr unsigned kMinorBits = 20;

dev_t DeviceOf(uint32_t device) {
    return makedev(device >> kMinorBits, device & ((1U << kMinorBits) - 1));
}

uint32_t NumberOf(dev_t device) {
    return major(device) << kMinorBits | minor(device);
}

vorn_scope ForKernel(const KernelIterator::Scope& scope) {
    vorn_scope result{};
    for (const dev_t device : scope.fileSystems) {
        result.file_systems[result.file_system_count++] = NumberOf(device);
    }
    result.sockets = scope.sockets ? 1 : 0;
    result.paths = scope.paths ? 1 : 0;
    return result;
}

int Load(KernelIterator::Kind kind, const vorn_scope& scope) {
    return kind == KernelIterator::Kind::kDescriptors ? vorn_iterate_files(&scope)
                                                      : vorn_iterate_mappings(&scope);
}

}  // namespace

HeldFile TakeHeldFile(std::string_view& portion) {
    const vorn_record head = HeadAt(portion.data());
    HeldFile file;
    file.pid = static_cast<pid_t>(head.pid);
    file.thread = static_cast<pid_t>(head.thread);
    file.descriptor = head.end == 0 ? static_cast<int>(head.descriptor) : -1;
    file.path = portion.substr(sizeof(head), head.path_length);
    file.mode = head.mode;
    file.device = DeviceOf(head.device);
    file.inode = head.inode;
    file.mount = static_cast<int>(head.mount);
    file.deleted = (head.flags & VORN_RECORD_DELETED) != 0;
    file.begin = head.begin;
    file.end = head.end;
    file.isInnerPath = (head.flags & VORN_RECORD_INNER_PATH) != 0;
    portion.remove_prefix(sizeof(head) + file.path.size());
    return file;
}

KernelIterator::Opened KernelIterator::Open(Kind kind, const Scope& scope) {
    if (scope.fileSystems.size() > VORN_MOST_FILE_SYSTEMS) {
        return {nullptr, "too many file systems are asked about"};
    }
    const KernelFacts facts = OwnKernelFacts();
    std::string reason = WhyNotAsked(facts);
    if (!reason.empty()) {
        return {nullptr, reason};
    }
    const int records = Load(kind, ForKernel(scope));
    if (records < 0) {
        return {nullptr, WhyRefused(-records, facts)};
    }
    return {std::make_unique<KernelIterator>(support::Descriptor(records)), ""};
}

bool KernelIterator::Read(std::string& portion) {
    ReadUntil(last_);
    return Take(atEnd_ ? pending_.size() : last_, portion);
}

bool KernelIterator::ReadRecords(std::string& records) {
    ReadUntil(seen_);
    return Take(seen_, records);
}

/** Until there is something, or nothing more. */
void KernelIterator::ReadUntil(const size_t& found) {
    while (found == 0 && !atEnd_) {
        atEnd_ = !ReadMore();
        FindLastProcess();
    }
    if (atEnd_ && seen_ != pending_.size()) {
        throw std::system_error(EPROTO, std::generic_category());
    }
}

bool KernelIterator::Take(size_t length, std::string& records) {
    records.assign(pending_, 0, length);
    pending_.erase(0, length);
    seen_ -= length;
    last_ = 0;
    return length > 0;
}

bool KernelIterator::ReadMore() {
    const size_t before = pending_.size();
    pending_.resize(before + kReadSize);
    ssize_t count = 0;
    do {
        // EAGAIN: a million files, and none was asked for; the next read goes on behind them.
        count = read(records_.Get(), &pending_[before], kReadSize);
    } while (count < 0 && (errno == EAGAIN || errno == EINTR));
    const int error = errno;
    pending_.resize(before + (count > 0 ? static_cast<size_t>(count) : 0));
    if (count < 0 && error == ENOMEM) {
        throw std::bad_alloc();
    }
    if (count < 0) {
        throw std::system_error(error, std::generic_category());
    }
    return count > 0;
}

void KernelIterator::FindLastProcess() {
    // Where the kernel's pages are large a read may end in the middle of a record.
    while (pending_.size() - seen_ >= sizeof(vorn_record)) {
        const vorn_record head = HeadAt(&pending_[seen_]);
        const size_t size = sizeof(head) + head.path_length;
        if (pending_.size() - seen_ < size) {
            return;
        }
        const auto pid = static_cast<pid_t>(head.pid);
        if (pid != lastPid_) {
            last_ = seen_;
            lastPid_ = pid;
        }
        seen_ += size;
    }
}

}  // namespace cli
