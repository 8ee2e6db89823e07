// SPDX-License-Identifier: MIT
#include "tests/unit/support/scripted_platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "tests/unit/support/failing_calls.h"
#include "tests/unit/support/failing_new.h"
#include "tests/unit/support/journal.h"
#include "tests/unit/support/scripted_lists.h"
#include "vorn/platform/file.h"
#include "vorn/platform/hidden.h"

namespace {

using unit::ScriptedPlatform;
using unit::ThePlatform;

thread_local int errorCode = 0;

int Fail(int code) {
    errorCode = code;
    return -1;
}

}  // namespace

namespace unit {

ScriptedPlatform& ThePlatform() {
    // Outlives every static object: free() asks it.
    static ScriptedPlatform& platform = *new ScriptedPlatform;
    return platform;
}

void ResetPlatform() {
    ThePlatform() = ScriptedPlatform();
    errorCode = 0;
}

void SetPlatformError(int code) {
    errorCode = code;
}

std::vector<std::string> ScriptedPlatform::LiveObjects() const {
    std::vector<std::string> names;
    for (const auto& object : live) {
        names.push_back(object.second);
    }
    return names;
}

}  // namespace unit

extern "C" {

void KLIBCErrSetEx(int code, const char* source, int line) {
    const unit::FailingNewPause pause;
    unit::Note("KLIBCErrSetEx", unit::Hex(code), source, line);
    errorCode = code;
    ThePlatform().errorSets.push_back({code, source, line});
}

int KLIBCErrGet(void) {
    return errorCode;
}

int KLIBCFileEnumDir(const char* path, const char* pattern, KLIBC_SZLIST** list, int options) {
    const unit::FailingNewPause pause;
    unit::Note("KLIBCFileEnumDir", path, pattern, unit::ListName(*list), unit::Hex(options));
    const auto names = ThePlatform().directories.find(path);
    if (unit::Fails("KLIBCFileEnumDir") || names == ThePlatform().directories.end()) {
        unit::AppendTexts("KLIBCFileEnumDir", list, ThePlatform().partialDirectories[path]);
        return Fail(ScriptedPlatform::kEnumDirError);
    }
    unit::AppendTexts("KLIBCFileEnumDir", list, names->second);
    return static_cast<int>(names->second.size());
}

int KLIBCFileCheckDir(const char* path) {
    const unit::FailingNewPause pause;
    unit::Note("KLIBCFileCheckDir", path);
    if (unit::Fails("KLIBCFileCheckDir")) {
        return Fail(ScriptedPlatform::kCheckDirError);
    }
    const auto check = ThePlatform().directoryChecks.find(path);
    return check != ThePlatform().directoryChecks.end() ? check->second : 0;
}

int KLIBCFileGetSectionValue(const char* path, const char* section, const char* key, char* buffer,
                             int size) {
    const unit::FailingNewPause pause;
    unit::Note("KLIBCFileGetSectionValue", path, section, key, size);
    EXPECT_EQ(std::count(buffer, buffer + size, '\0'), size);
    const auto value = ThePlatform().sectionValues.find({path, section, key});
    if (unit::Fails("KLIBCFileGetSectionValue") || value == ThePlatform().sectionValues.end()) {
        return Fail(ScriptedPlatform::kSectionError);
    }
    const size_t length = value->second.copy(buffer, static_cast<size_t>(size) - 1);
    buffer[length] = '\0';
    return ThePlatform().sectionResult;
}

int VORNShareEnum(KLIBC_SZLIST** names, int flags) {
    const unit::FailingNewPause pause;
    unit::Note("VORNShareEnum", unit::ListName(*names), unit::Hex(flags));
    if (unit::Fails("VORNShareEnum")) {
        return Fail(ScriptedPlatform::kShareEnumError);
    }
    std::vector<std::string> texts;
    for (const ScriptedPlatform::Share& share : ThePlatform().shares) {
        texts.push_back(share.name);
    }
    unit::AppendTexts("VORNShareEnum", names, texts);
    const int result = ThePlatform().shareEnumResult.value_or(static_cast<int>(texts.size()));
    return result < 0 ? (Fail(ScriptedPlatform::kShareEnumError), result) : result;
}

int VORNShareGet(const char* name, VORN_SHARE** share) {
    const unit::FailingNewPause pause;
    ScriptedPlatform& platform = ThePlatform();
    unit::Note("VORNShareGet", name, *share == nullptr ? "null" : "the record");
    EXPECT_TRUE(*share == nullptr || *share == &platform.shareRecord);
    if (unit::Fails("VORNShareGet") || platform.failingShares.count(name) != 0) {
        return Fail(ScriptedPlatform::kShareGetError);
    }
    for (const ScriptedPlatform::Share& scripted : platform.shares) {
        if (scripted.name == name) {
            platform.sharePath.assign(platform.sharePath.size(), '?');
            platform.sharePath = scripted.path;
            platform.shareRecord.szPath = platform.sharePath.c_str();
            *share = &platform.shareRecord;
            return platform.sharesGiven++;
        }
    }
    return Fail(ScriptedPlatform::kShareGetError);
}

VORN_MOUNT_VOL_INFO* VORNMountVolAllEnum(int type, int state, int flags) {
    const unit::FailingNewPause pause;
    unit::Note("VORNMountVolAllEnum", type, state, flags);
    std::vector<VORN_MOUNT_VOL_INFO>& chain = ThePlatform().volumeChain;
    chain.assign(ThePlatform().volumes.size(), VORN_MOUNT_VOL_INFO());
    for (size_t i = 0; i < chain.size(); ++i) {
        std::memset(chain[i].reserved, 'x', sizeof(chain[i].reserved));
        ThePlatform().volumes[i].copy(chain[i].szMountPath, sizeof(chain[i].szMountPath) - 1);
        chain[i].pNext = i + 1 < chain.size() ? &chain[i + 1] : nullptr;
    }
    if (unit::Fails("VORNMountVolAllEnum") || chain.empty()) {
        Fail(ScriptedPlatform::kVolumeError);
        return nullptr;
    }
    return chain.data();
}

void VORNMountVolInfoFree(VORN_MOUNT_VOL_INFO* volume) {
    unit::Note("VORNMountVolInfoFree", volume == nullptr ? nullptr : volume->szMountPath);
}

int VORNEAHiddenDirGet(KLIBC_SZLIST** list) {
    const unit::FailingNewPause pause;
    unit::Note("VORNEAHiddenDirGet", unit::ListName(*list));
    if (unit::Fails("VORNEAHiddenDirGet")) {
        return Fail(ScriptedPlatform::kHiddenError);
    }
    unit::AppendTexts("VORNEAHiddenDirGet", list, ThePlatform().hiddenDirectories);
    const int result = ThePlatform().hiddenResult;
    return result < 0 ? (Fail(ScriptedPlatform::kHiddenError), result) : result;
}

}  // extern "C"
