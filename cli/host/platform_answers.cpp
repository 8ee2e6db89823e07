// SPDX-License-Identifier: MIT
#include "cli/host/platform_answers.h"

#include <algorithm>

#include "cli/host/next_operation.h"
#include "vorn/platform/error.h"
#include "vorn/platform/hidden.h"

namespace cli {
namespace {

thread_local PlatformAnswers* noted = nullptr;
thread_local const PlatformAnswers* given = nullptr;

std::vector<std::string> TextsOf(const KLIBC_SZLIST* list) {
    std::vector<std::string> texts;
    for (int i = 0; i < list->nItem; ++i) {
        texts.emplace_back(KLIBCSzListGet(list, i));
    }
    return texts;
}

int Push(const std::vector<std::string>& texts, KLIBC_SZLIST** list) {
    const bool pushed = std::all_of(texts.begin(), texts.end(), [&](const std::string& text) {
        return KLIBCSzListPush(list, text.c_str()) >= 0;
    });
    return pushed ? static_cast<int>(texts.size()) : -1;
}

}  // namespace

PlatformAnswers::Noting::Noting(PlatformAnswers& answers) {
    noted = &answers;
}
PlatformAnswers::Noting::~Noting() {
    noted = nullptr;
}
PlatformAnswers::Giving::Giving(const PlatformAnswers& answers) {
    given = &answers;
}
PlatformAnswers::Giving::~Giving() {
    given = nullptr;
}
void PlatformAnswers::NoteShares(const KLIBC_SZLIST* names) {
    shareNames_ = TextsOf(names);
    sharePaths_.clear();
}

void PlatformAnswers::NoteShare(const char* name, const VORN_SHARE& share) {
    sharePaths_[name] = share.szPath;
}

void PlatformAnswers::NoteVolumes(const VORN_MOUNT_VOL_INFO* chain) {
    volumes_.clear();
    for (; chain != nullptr; chain = chain->pNext) {
        volumes_.push_back(*chain);
    }
    for (size_t i = 1; i < volumes_.size(); ++i) {
        volumes_[i - 1].pNext = &volumes_[i];
    }
}

void PlatformAnswers::NoteHidden(const KLIBC_SZLIST* list) {
    hidden_ = TextsOf(list);
}

int PlatformAnswers::GiveShares(KLIBC_SZLIST** names) const {
    // No share has its log line already, where it was noted. An empty list leads to the same.
    return Push(shareNames_, names) < 0 ? -1 : std::max(1, static_cast<int>(shareNames_.size()));
}

int PlatformAnswers::GiveShare(const char* name, VORN_SHARE** share) const {
    thread_local VORN_SHARE record;
    const auto found = sharePaths_.find(name);
    if (found == sharePaths_.end()) {
        KLIBCErrSetEx(KLIBC_ERR_NOT_FOUND, "platform_answers", __LINE__);
        return -1;
    }
    record.szPath = found->second.c_str();
    *share = &record;
    return 0;
}

VORN_MOUNT_VOL_INFO* PlatformAnswers::GiveVolumes() const {
    // Readers leave it as it is, and it stays for the next.
    return volumes_.empty() ? nullptr : const_cast<VORN_MOUNT_VOL_INFO*>(volumes_.data());
}

int PlatformAnswers::GiveHidden(KLIBC_SZLIST** list) const {
    return Push(hidden_, list);
}

}  // namespace cli

VORN_STANDS_BEFORE int VORNShareEnum(KLIBC_SZLIST** names, int flags) {
    static const auto kNext = cli::NextOperation<decltype(VORNShareEnum)>("VORNShareEnum");
    if (cli::given != nullptr) {
        return cli::given->GiveShares(names);
    }
    const int result = kNext(names, flags);
    if (cli::noted != nullptr && result >= 0) {
        cli::noted->NoteShares(*names);
    }
    return result;
}

VORN_STANDS_BEFORE int VORNShareGet(const char* name, VORN_SHARE** share) {
    static const auto kNext = cli::NextOperation<decltype(VORNShareGet)>("VORNShareGet");
    if (cli::given != nullptr) {
        return cli::given->GiveShare(name, share);
    }
    const int result = kNext(name, share);
    if (cli::noted != nullptr && result >= 0) {
        cli::noted->NoteShare(name, **share);
    }
    return result;
}

VORN_STANDS_BEFORE VORN_MOUNT_VOL_INFO* VORNMountVolAllEnum(int type, int state, int flags) {
    static const auto kNext =
        cli::NextOperation<decltype(VORNMountVolAllEnum)>("VORNMountVolAllEnum");
    if (cli::given != nullptr) {
        return cli::given->GiveVolumes();
    }
    VORN_MOUNT_VOL_INFO* const chain = kNext(type, state, flags);
    if (cli::noted != nullptr) {
        cli::noted->NoteVolumes(chain);
    }
    return chain;
}

VORN_STANDS_BEFORE int VORNEAHiddenDirGet(KLIBC_SZLIST** list) {
    static const auto kNext =
        cli::NextOperation<decltype(VORNEAHiddenDirGet)>("VORNEAHiddenDirGet");
    if (cli::given != nullptr) {
        return cli::given->GiveHidden(list);
    }
    const int result = kNext(list);
    if (cli::noted != nullptr && result >= 0) {
        cli::noted->NoteHidden(*list);
    }
    return result;
}
