// SPDX-License-Identifier: MIT
#include "cli/host/folder_memory.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <optional>

#include "cli/host/next_operation.h"
#include "vorn/platform/file.h"

namespace cli {
namespace {

thread_local FolderMemory* memory = nullptr;

int AskPlatform(const char* path) {
    static const auto kNext = NextOperation<decltype(KLIBCFileCheckDir)>("KLIBCFileCheckDir");
    return kNext(path);
}

/** Nothing where it can't be told in the way that the platform asks first. */
std::optional<int> TestIn(const support::Descriptor& folder, const char* name) {
    struct statx info {};
    if (!folder ||
        statx(folder.Get(), name, AT_STATX_DONT_SYNC | AT_NO_AUTOMOUNT, STATX_TYPE, &info) != 0 ||
        (info.stx_mask & STATX_TYPE) == 0) {
        return std::nullopt;
    }
    return S_ISDIR(info.stx_mode) ? 1 : 0;
}

}  // namespace

FolderMemory::FolderMemory() {
    memory = this;
}

FolderMemory::~FolderMemory() {
    memory = nullptr;
}

int FolderMemory::Test(const std::string& path) {
    const size_t nameAt = path.rfind('/') + 1;
    if (path.compare(0, nameAt, folder_) != 0) {
        folder_.assign(path, 0, nameAt);
        opened_.Reset();
        return AskPlatform(path.c_str());
    }
    // The second of a folder: there may be many.
    if (!opened_) {
        opened_ = support::Descriptor(open(folder_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
    const std::optional<int> result = TestIn(opened_, path.c_str() + nameAt);
    return result ? *result : AskPlatform(path.c_str());
}

int FolderMemory::CheckDir(const char* path) {
    if (path_ != path) {
        path_ = path;
        result_ = Test(path_);
    }
    return result_;
}

}  // namespace cli

VORN_STANDS_BEFORE int KLIBCFileCheckDir(const char* path) {
    return cli::memory != nullptr ? cli::memory->CheckDir(path) : cli::AskPlatform(path);
}
