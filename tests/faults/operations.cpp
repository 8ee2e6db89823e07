// SPDX-License-Identifier: MIT
#include "tests/faults/operations.h"

#include <cstdio>
#include <cstdlib>
#include <list>
#include <memory>
#include <new>

#include "tests/faults/failing_malloc.h"
#include "vorn/filehandle.h"
#include "vorn/platform/connection.h"
#include "vorn/platform/error.h"
#include "vorn/platform/file.h"
#include "vorn/platform/finding.h"
#include "vorn/platform/hidden.h"
#include "vorn/platform/process.h"
#include "vorn/platform/share.h"
#include "vorn/platform/string_bundle.h"
#include "vorn/platform/string_list.h"
#include "vorn/platform/volume.h"

namespace faults {
namespace {

using VORN::FileHandle::OpenedFile;

struct ListFree {
    void operator()(KLIBC_SZLIST* list) const { KLIBCSzListFree(list); }
};

std::string Failed() {
    char text[32];
    std::snprintf(text, sizeof(text), "failed 0x%04X", static_cast<unsigned>(KLIBCErrGet()));
    return text;
}

/** Runs one call with one failing allocation. */
template <typename Call>
auto Run(int failingAllocation, const Call& call) {
    KLIBCErrSetEx(0, "", 0);
    const FailingMalloc failing(failingAllocation);
    return call();
}

/** An operation that fills a list; a failing one must leave the list as it was. */
template <typename Fill>
std::string Filled(int failingAllocation, const Fill& fill) {
    KLIBC_SZLIST* list = KLIBCSzListAlloc(512);
    const int result = Run(failingAllocation, [&] { return fill(&list); });
    const std::unique_ptr<KLIBC_SZLIST, ListFree> owner(list);
    if (result < 0) {
        return list->nItem == 0 ? Failed() : "failed with " + std::to_string(list->nItem);
    }
    std::string text = "ok";
    for (int i = 0; i < list->nItem; ++i) {
        text.append(" ").append(KLIBCSzListGet(list, i));
    }
    return text;
}

std::string AllocList(int failing) {
    KLIBC_SZLIST* list = Run(failing, [] { return KLIBCSzListAlloc(512); });
    const std::unique_ptr<KLIBC_SZLIST, ListFree> owner(list);
    return list != nullptr ? "ok" : Failed();
}

/** Enough to make the list grow several times; what failed is tried again. */
std::string PushMany(int failing) {
    const std::unique_ptr<KLIBC_SZLIST, ListFree> owner(KLIBCSzListAlloc(16));
    KLIBC_SZLIST* list = owner.get();
    int failures = 0;
    Run(failing, [&] {
        for (int i = 0; i < 3000; ++i) {
            while (KLIBCSzListPush(&list, "a text of some thirty letters.") < 0 && ++failures < 3) {
            }
        }
        return 0;
    });
    if (failures > 1 || list->nItem != 3000 || (failures == 1 && KLIBCErrGet() != 0x0100)) {
        return "wrong: " + std::to_string(failures) + " failures, " + std::to_string(list->nItem);
    }
    return failures == 0 ? "ok" : Failed();
}

std::string EnumDir(int failing) {
    return Filled(failing, [](KLIBC_SZLIST** list) {
        return KLIBCFileEnumDir("/usr/share", nullptr, list, KLIBC_ENUM_DIRECTORIES);
    });
}

std::string SectionValue(int failing) {
    char buffer[1024] = {};
    const int result = Run(failing, [&] {
        return KLIBCFileGetSectionValue("/usr/lib/systemd/system/sshd.slice", "X-Vornalis", "Name",
                                        buffer, sizeof(buffer));
    });
    return result == 0 ? std::string("ok ") + buffer : Failed();
}

std::string CheckDir(int failing) {
    return Run(failing, [] { return KLIBCFileCheckDir("/volume1"); }) == 1 ? "ok" : Failed();
}

std::string ShareEnum(int failing) {
    return Filled(failing, [](KLIBC_SZLIST** list) { return VORNShareEnum(list, 0x7F0F); });
}

std::string ShareGet(int failing) {
    VORN_SHARE* share = nullptr;
    const int result = Run(failing, [&] { return VORNShareGet("photo", &share); });
    return result >= 0 ? std::string("ok ") + share->szPath : Failed();
}

std::string VolumeEnum(int failing) {
    const VORN_MOUNT_VOL_INFO* volume = Run(failing, [] { return VORNMountVolAllEnum(0, 3, 2); });
    std::string text = volume == nullptr ? Failed() : "ok";
    for (; volume != nullptr; volume = volume->pNext) {
        text.append(" ").append(volume->szMountPath);
    }
    return text;
}

std::string HiddenGet(int failing) {
    return Filled(failing, [](KLIBC_SZLIST** list) { return VORNEAHiddenDirGet(list); });
}

std::string Connections(int failing) {
    VORN_CURCONN* block = nullptr;
    const int count = Run(failing, [&] { return VORNCurConnGet(&block); });
    std::string text = count < 0 ? Failed() : "ok";
    for (int i = 0; i < count; ++i) {
        text += " " + std::to_string(block[i].pid) + " " + block[i].szHost + " " + block[i].szUser;
    }
    std::free(block);
    return text;
}

std::string Process(int failing) {
    KLIBC_PROC* process = nullptr;
    const int result = Run(failing, [&] { return KLIBCProcGetByPid(1, &process); });
    KLIBCProcFree(process);
    return result >= 0 ? "ok" : Failed();
}

std::string Findings(int failing) {
    VORN_FINDING* block = nullptr;
    const int count =
        Run(failing, [&] { return VORNFindingGet(VORN_FINDINGS_OF_ANSWERS, &block); });
    std::string text = count < 0 ? Failed() : "ok";
    for (int i = 0; i < count; ++i) {
        text.append(" ").append(block[i].szSubject).append(": ").append(block[i].szText);
    }
    std::free(block);
    return text;
}

std::string Text(int failing) {
    std::string text = "ok ";
    Run(failing, [&] {
        StringBundle bundle("service", nullptr, nullptr, nullptr, nullptr, nullptr);
        text += bundle.Text("internal_service", "");
        return 0;
    });
    return text;
}

/** A line a file: texts and flags, a tab between them. */
std::string Shown(OpenedFile& file) {
    std::string row;
    for (const std::string& text :
         {file.getPidStr(), file.getFullPath(), file.getPath(), file.getFilename(),
          file.getService(), file.getHost(), file.getUser(), file.getTime()}) {
        row += text + '\t';
    }
    return row + (file.isHidden() ? "hidden " : "") + (file.isFolder() ? "folder" : "");
}

/** How a call over a list of files ends, with the list that it leaves behind. */
template <typename Call>
std::string OverFiles(int failing, std::list<OpenedFile>& files, const Call& call) {
    std::string text;
    try {
        text = Run(failing, [&] { return call(files); }) == 0 ? "ok" : Failed();
    } catch (const std::bad_alloc&) {
        text = "throws bad_alloc";
    }
    for (OpenedFile& file : files) {
        text += '\n' + Shown(file);
    }
    return text;
}

std::string Enumerate(int failing, int enumby) {
    std::list<OpenedFile> files;
    return OverFiles(failing, files, [enumby](std::list<OpenedFile>& list) {
        return VORN::FileHandle::VORNEnumOpenedFile(list, enumby);
    });
}

std::string EnumerateByShare(int failing) {
    return Enumerate(failing, VORN::FileHandle::ENUM_BY_SHARE);
}
std::string EnumerateByVolume(int failing) {
    return Enumerate(failing, VORN::FileHandle::ENUM_BY_VOLUME);
}

std::string AccessTimes(int failing) {
    std::list<OpenedFile> files;
    for (const char* path : {"/volume1/photo/held", "/volume1/music/held"}) {
        files.emplace_back();
        files.back().setFullPath(path);
    }
    return OverFiles(failing, files, &VORN::FileHandle::VORNGetLastAccessTime);
}

std::string Kickable(int failing) {
    std::list<std::string> services;
    Run(failing, [&] {
        VORN::FileHandle::GetKickableServiceList(services);
        return 0;
    });
    std::string text = "ok";
    for (const std::string& service : services) {
        text += '\n' + service;
    }
    return text;
}

}  // namespace

const std::vector<Operation>& Operations() {
    static const std::vector<Operation> operations = {
        {"KLIBCSzListAlloc", &AllocList, Kind::kC, ""},
        {"KLIBCSzListPush", &PushMany, Kind::kC, ""},
        {"KLIBCFileEnumDir", &EnumDir, Kind::kC, " doc"},
        {"KLIBCFileCheckDir", &CheckDir, Kind::kC, ""},
        {"KLIBCFileGetSectionValue", &SectionValue, Kind::kC, " plain SSH"},
        {"VORNShareEnum", &ShareEnum, Kind::kC, " photo"},
        {"VORNShareGet", &ShareGet, Kind::kC, " /volume1/photo"},
        {"VORNMountVolAllEnum", &VolumeEnum, Kind::kC, " /volume2"},
        {"VORNEAHiddenDirGet", &HiddenGet, Kind::kC, " "},
        {"VORNCurConnGet", &Connections, Kind::kC, " 127.0.0.1 alice"},
        {"KLIBCProcGetByPid", &Process, Kind::kC, ""},
        {"VORNFindingGet", &Findings, Kind::kC, " bind mounts: "},
        {"StringBundle", &Text, Kind::kThrows, " Internal service"},
        {"VORNEnumOpenedFileByShare", &EnumerateByShare, Kind::kFiles, "\t127.0.0.1\talice\t"},
        {"VORNEnumOpenedFileByVolume", &EnumerateByVolume, Kind::kFiles, "\t127.0.0.1\talice\t"},
        {"VORNGetLastAccessTime", &AccessTimes, Kind::kTimes, "/volume1/music/held\t"},
        {"GetKickableServiceList", &Kickable, Kind::kServices, "\nAFP\nFTP\nSSH\n"},
    };
    return operations;
}

}  // namespace faults
