// SPDX-License-Identifier: MIT
#include "cli/question/sources/walk_source.h"

#include <cstring>

#include "cli/host/descriptor_links.h"
#include "cli/host/next_operation.h"
#include "vorn/platform/file.h"

namespace cli {
namespace {

/** Of the portion that this thread takes; null otherwise. */
thread_local WalkSource* walk = nullptr;

class OnTurn {
public:
    explicit OnTurn(WalkSource& source) { walk = &source; }
    ~OnTurn() { walk = nullptr; }
    OnTurn(const OnTurn&) = delete;
    OnTurn& operator=(const OnTurn&) = delete;
};

int ListFolder(const char* path, const char* pattern, KLIBC_SZLIST** list, int options) {
    static const auto kNext = NextOperation<decltype(KLIBCFileEnumDir)>("KLIBCFileEnumDir");
    return kNext(path, pattern, list, options);
}

/** All of one process. */
void Append(LibraryFiles& found, Files& records, RecordTexts& texts) {
    if (found.empty()) {
        return;
    }
    ProcessTexts& process = texts.AddProcess({found.front().getPidStr(), "", "", ""});
    for (OpenedFile& file : found) {
        FileRecord& record = records.emplace_back();
        record.fullPath = texts.Keep(file.getFullPath());
        record.process = &process;
    }
}

}  // namespace

bool WalkSource::IsOver() {
    if (ended_) {
        return true;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    return processes_ && next_ == processes_->nItem;
}

int WalkSource::ListProcesses(int options) {
    constexpr int kInitialSize = 512;
    KLIBC_SZLIST* list = KLIBCSzListAlloc(kInitialSize);
    const int result = list == nullptr ? -1 : ListFolder("/proc", nullptr, &list, options);
    processes_.reset(list);
    return result;
}

int WalkSource::TakeProcess(KLIBC_SZLIST** list, int options) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!processes_ && !ended_ && ListProcesses(options) < 0) {
        ended_ = true;
        return -1;
    }
    return ended_ || next_ == processes_->nItem
               ? 0
               : KLIBCSzListPush(list, KLIBCSzListGet(processes_.get(), next_++));
}

int WalkSource::Next(Files& records, RecordTexts& texts) {
    if (IsOver()) {
        return 0;
    }
    const OnTurn turn(*this);
    const DescriptorLinks links;
    LibraryFiles found;
    try {
        if (VORN::FileHandle::GetProcOpenedFileInVolume(found) >= 0) {
            Append(found, records, texts);
            return 1;
        }
    } catch (...) {
        ended_ = true;
        throw;
    }
    ended_ = true;
    return -1;
}

}  // namespace cli

VORN_STANDS_BEFORE int KLIBCFileEnumDir(const char* path, const char* pattern, KLIBC_SZLIST** list,
                                        int options) {
    return cli::walk != nullptr && std::strcmp(path, "/proc") == 0
               ? cli::walk->TakeProcess(list, options)
               : cli::ListFolder(path, pattern, list, options);
}
