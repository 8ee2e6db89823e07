#include "operations.h"

#include <cstdio>
#include <cstdlib>
#include <list>
#include <memory>
#include <new>

#include "failing_malloc.h"
#include "vorn/filehandle.h"
#include "vorn/platform/connection.h"
#include "vorn/platform/error.h"
#include "vorn/platform/file.h"
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

std::string Text(int failing) {
    std::string text = "ok ";
    Run(failing, [&] {
        StringBundle bundle("service", nullptr, nullptr, nullptr, nullptr, nullptr);
        text += bundle.Text("internal_service", "");
        return 0;
    });
    return text;
}

std::string Enumerate(int failing, int enumby) {
    std::list<OpenedFile> files;
    const int result =
        Run(failing, [&] { return VORN::FileHandle::VORNEnumOpenedFile(files, enumby); });
    std::string text = result == 0 ? "ok" : Failed();
    for (OpenedFile& file : files) {
        text += result != 0
                    ? ""
                    : " " + file.getPidStr() + " " + file.getPath() + " " + file.getService() +
                          " " + file.getHost() + " " + file.getUser() + ",";
    }
    return text;
}

std::string EnumerateByShare(int failing) {
    return Enumerate(failing, VORN::FileHandle::ENUM_BY_SHARE);
}
std::string EnumerateByVolume(int failing) {
    return Enumerate(failing, VORN::FileHandle::ENUM_BY_VOLUME);
}

std::string AccessTimes(int failing) {
    std::list<OpenedFile> files(2);
    for (OpenedFile& file : files) {
        file.setFullPath("/volume1/photo/held");
    }
    const int result = Run(failing, [&] { return VORN::FileHandle::VORNGetLastAccessTime(files); });
    return result == 0 && files.size() == 2 ? "ok " + files.back().getTime() : Failed();
}

std::string Kickable(int failing) {
    std::list<std::string> services;
    Run(failing, [&] {
        VORN::FileHandle::GetKickableServiceList(services);
        return 0;
    });
    std::string text = "ok";
    for (const std::string& service : services) {
        text += " " + service;
    }
    return text;
}

}  // namespace

const std::vector<Operation>& Operations() {
    static const std::vector<Operation> operations = {
        {"KLIBCSzListAlloc", &AllocList, false},
        {"KLIBCSzListPush", &PushMany, false},
        {"KLIBCFileEnumDir", &EnumDir, false},
        {"KLIBCFileCheckDir", &CheckDir, false},
        {"KLIBCFileGetSectionValue", &SectionValue, false},
        {"VORNShareEnum", &ShareEnum, false},
        {"VORNShareGet", &ShareGet, false},
        {"VORNMountVolAllEnum", &VolumeEnum, false},
        {"VORNEAHiddenDirGet", &HiddenGet, false},
        {"VORNCurConnGet", &Connections, false},
        {"KLIBCProcGetByPid", &Process, false},
        {"StringBundle", &Text, true},
        {"VORNEnumOpenedFileByShare", &EnumerateByShare, true},
        {"VORNEnumOpenedFileByVolume", &EnumerateByVolume, true},
        {"VORNGetLastAccessTime", &AccessTimes, true},
        {"GetKickableServiceList", &Kickable, true},
    };
    return operations;
}

}  // namespace faults
