// SPDX-License-Identifier: MIT
#include "cli/question/sources/iterator_source.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <string>
#include <system_error>

#include "cli/host/bare_volume_guard.h"
#include "support/folder.h"
#include "vorn/platform/error.h"

namespace cli {
namespace {

namespace fh = VORN::FileHandle;

/** Whether this process may list another one's descriptors and read where they lead. */
bool MayLookInto(pid_t pid) {
    // Every process has a working folder, and what it is may be read by who may read descriptors.
    char target = 0;
    return support::OpenFolder(fmt::format("/proc/{}/fd", pid).c_str()) &&
           readlinkat(AT_FDCWD, fmt::format("/proc/{}/cwd", pid).c_str(), &target, 1) >= 0;
}

/** The process whose records are being made. */
class Process {
public:
    explicit Process(RecordTexts& owner) : owner_(owner) {}

    void Enter(pid_t pid) {
        if (pid != pid_) {
            pid_ = pid;
            texts_ = nullptr;
            mayLookInto_ = MayLookInto(pid);
        }
    }
    bool IsShown() const { return mayLookInto_; }
    ProcessTexts* Texts() {
        if (texts_ == nullptr) {
            texts_ = &owner_.AddProcess({std::to_string(pid_), "", "", ""});
        }
        return texts_;
    }

private:
    RecordTexts& owner_;
    pid_t pid_ = 0;
    ProcessTexts* texts_ = nullptr;
    bool mayLookInto_ = false;
};

constexpr std::string_view kBareVolume = "/volume";

/** The library's line, as for a /proc that it can't list: nobody can tell the processes. */
int FailEnumeration() {
    KLIBCErrSetEx(KLIBC_ERR_RESOURCE, "iterator_source", __LINE__);
    syslog(LOG_ERR, "%s:%d Fail to enum /proc, vornerr=[0x%04X]", "filehandle_get_proc_opened_file",
           48, static_cast<unsigned>(KLIBCErrGet()));
    return -1;
}

}  // namespace

int IteratorSource::Next(Files& records, RecordTexts& texts) {
    try {
        std::string portion;
        if (!TakePortion(portion)) {
            return 0;
        }
        AppendRecords(portion, records, texts);
        return 1;
    } catch (const std::system_error&) {
        return FailEnumeration();
    } catch (...) {
        const std::lock_guard<std::mutex> lock(mutex_);
        iterator_.reset();
        throw;
    }
}

std::string IteratorSource::Notice() const {
    return BareVolumeNotice(bareVolumes_);
}

bool IteratorSource::TakePortion(std::string& portion) {
    const std::lock_guard<std::mutex> lock(mutex_);
    // Whatever ends it, a failure as well, ends it for all threads.
    std::unique_ptr<KernelIterator> iterator = std::move(iterator_);
    if (!iterator || !iterator->Read(portion)) {
        return false;
    }
    iterator_ = std::move(iterator);
    return true;
}

void IteratorSource::AppendRecords(std::string_view portion, Files& records, RecordTexts& texts) {
    Process process(texts);
    std::string path;
    while (!portion.empty()) {
        const HeldFile held = TakeHeldFile(portion);
        path = held.path;
        const bool isBareVolume = path == kBareVolume;
        if (held.descriptor == 0 || (!isBareVolume && !fh::PathBeginWithVolume(path))) {
            continue;
        }
        process.Enter(held.pid);
        if (!process.IsShown()) {
            continue;
        }
        if (isBareVolume) {
            NoteBareVolume(held.pid);
            continue;
        }
        FileRecord& file = records.emplace_back();
        file.fullPath = texts.Keep(path);
        file.process = process.Texts();
        // Nothing is named so any more that is deleted, hence nothing is a folder of that name.
        file.folder = S_ISDIR(held.mode) && !held.deleted;
    }
}

void IteratorSource::NoteBareVolume(pid_t pid) {
    const std::lock_guard<std::mutex> lock(mutex_);
    bareVolumes_.insert(pid);
}

}  // namespace cli
