#include "volume_guard.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string_view>

#include "vorn/platform/file.h"

namespace cli {
namespace {

constexpr std::string_view kProcess = "/proc/";
constexpr std::string_view kDescriptors = "/fd/";
constexpr std::string_view kBareVolume = "/volume";

VolumeGuard* guard = nullptr;

struct ListFree {
    void operator()(KLIBC_SZLIST* list) const { KLIBCSzListFree(list); }
};

/** The pid in "/proc/<pid>/fd/", empty for another folder. */
std::string_view PidOf(std::string_view folder) {
    if (folder.size() <= kProcess.size() + kDescriptors.size() ||
        folder.substr(0, kProcess.size()) != kProcess ||
        folder.substr(folder.size() - kDescriptors.size()) != kDescriptors) {
        return {};
    }
    return folder.substr(kProcess.size(), folder.size() - kProcess.size() - kDescriptors.size());
}

int NextEnumDir(const char* path, const char* pattern, KLIBC_SZLIST** list, int options) {
    static const auto kNext =
        reinterpret_cast<decltype(&KLIBCFileEnumDir)>(dlsym(RTLD_NEXT, "KLIBCFileEnumDir"));
    return kNext(path, pattern, list, options);
}

int GuardedEnumDir(const char* path, const char* pattern, KLIBC_SZLIST** list, int options) {
    KLIBC_SZLIST* all = KLIBCSzListAlloc(0);
    const int count = NextEnumDir(path, pattern, &all, options);
    const std::unique_ptr<KLIBC_SZLIST, ListFree> owner(all);
    for (int i = 0; i < count; ++i) {
        const char* name = KLIBCSzListGet(all, i);
        if (!guard->LeavesOut(path, name) && KLIBCSzListPush(list, name) < 0) {
            return -1;
        }
    }
    return count;
}

}  // namespace

VolumeGuard::VolumeGuard() {
    guard = this;
}

VolumeGuard::~VolumeGuard() {
    guard = nullptr;
}

bool VolumeGuard::LeavesOut(const std::string& folder, const char* descriptor) {
    char target[kBareVolume.size() + 1];
    const ssize_t length = readlink((folder + descriptor).c_str(), target, sizeof(target));
    if (length < 0 || std::string_view(target, static_cast<size_t>(length)) != kBareVolume) {
        return false;
    }
    const std::string_view pid = PidOf(folder);
    if (std::find(pids_.begin(), pids_.end(), pid) == pids_.end()) {
        pids_.emplace_back(pid);
    }
    return true;
}

}  // namespace cli

// The dynamic linker finds this one first: it is the program's.
extern "C" __attribute__((visibility("default"))) int KLIBCFileEnumDir(const char* path,
                                                                       const char* pattern,
                                                                       KLIBC_SZLIST** list,
                                                                       int options) {
    const bool guarded = cli::guard != nullptr && !cli::PidOf(path).empty();
    return guarded ? cli::GuardedEnumDir(path, pattern, list, options)
                   : cli::NextEnumDir(path, pattern, list, options);
}
