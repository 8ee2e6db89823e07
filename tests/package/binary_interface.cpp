// SPDX-License-Identifier: MIT
/**
 * @file
 * The types behind the exported names, as they were first given to others, and the layout of what
 * passes between both sides. Names of C functions and results of C++ functions are not in the
 * symbols, so that a change of theirs would otherwise go unseen. Compiling it is the test; that no
 * exported name is missing here is interface_is_whole.sh's.
 */

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <type_traits>
#include <unordered_map>

#include "vorn/filehandle.h"
#include "vorn/platform/connection.h"
#include "vorn/platform/error.h"
#include "vorn/platform/file.h"
#include "vorn/platform/finding.h"
#include "vorn/platform/hidden.h"
#include "vorn/platform/process.h"
#include "vorn/platform/service.h"
#include "vorn/platform/share.h"
#include "vorn/platform/string_bundle.h"
#include "vorn/platform/string_list.h"
#include "vorn/platform/volume.h"

namespace {

using namespace VORN::FileHandle;
using List = KLIBC_SZLIST;
using Files = std::list<OpenedFile>;
using Text = std::string;

#define HAS_TYPE(name, ...) \
    static_assert(std::is_same_v<decltype(name), __VA_ARGS__>, "the type of " #name)
#define HAS_MEMBER(name, ...) \
    static_assert(std::is_same_v<decltype(&OpenedFile::name), __VA_ARGS__>, "the type of " #name)

// What the platform supplies.
HAS_TYPE(KLIBCErrSetEx, void(int, const char*, int));
HAS_TYPE(KLIBCErrGet, int());
HAS_TYPE(KLIBCSzListAlloc, List*(int));
HAS_TYPE(KLIBCSzListPush, int(List**, const char*));
HAS_TYPE(KLIBCSzListGet, const char*(const List*, int));
HAS_TYPE(KLIBCSzListRemoveAll, void(List*));
HAS_TYPE(KLIBCSzListFree, void(List*));
HAS_TYPE(KLIBCFileEnumDir, int(const char*, const char*, List**, int));
HAS_TYPE(KLIBCFileCheckDir, int(const char*));
HAS_TYPE(KLIBCFileGetSectionValue, int(const char*, const char*, const char*, char*, int));
HAS_TYPE(VORNShareEnum, int(List**, int));
HAS_TYPE(VORNShareGet, int(const char*, VORN_SHARE**));
HAS_TYPE(VORNMountVolAllEnum, VORN_MOUNT_VOL_INFO*(int, int, int));
HAS_TYPE(VORNMountVolInfoFree, void(VORN_MOUNT_VOL_INFO*));
HAS_TYPE(VORNEAHiddenDirGet, int(List**));
HAS_TYPE(VORNCurConnGet, int(VORN_CURCONN**));
HAS_TYPE(KLIBCProcGetByPid, int(int, KLIBC_PROC**));
HAS_TYPE(KLIBCProcFree, void(KLIBC_PROC*));
HAS_TYPE(VORNFindingGet, int(int, VORN_FINDING**));
HAS_TYPE(VORNServiceStateGet, int(const char*));
static_assert(std::is_same_v<decltype(&StringBundle::Text),
                             const char* (StringBundle::*)(const char*, const char*)>);
static_assert(std::is_constructible_v<StringBundle, const char*, const char*, const char*,
                                      const char*, const char*, const char*>);

// Its records.
static_assert(offsetof(KLIBC_SZLIST, nItem) == 0);
static_assert(sizeof(KLIBC_SZLIST) == sizeof(int));
HAS_TYPE(KLIBC_SZLIST::nItem, int);
static_assert(offsetof(VORN_SHARE, szPath) == 16);
static_assert(sizeof(VORN_SHARE) == 24);
HAS_TYPE(VORN_SHARE::szPath, const char*);
static_assert(offsetof(VORN_MOUNT_VOL_INFO, szMountPath) == 52);
static_assert(offsetof(VORN_MOUNT_VOL_INFO, pNext) == 112);
static_assert(sizeof(VORN_MOUNT_VOL_INFO) == 120);
HAS_TYPE(VORN_MOUNT_VOL_INFO::szMountPath, char[60]);
HAS_TYPE(VORN_MOUNT_VOL_INFO::pNext, VORN_MOUNT_VOL_INFO*);
static_assert(offsetof(VORN_CURCONN, pid) == 0);
static_assert(offsetof(VORN_CURCONN, szHost) == 16);
static_assert(offsetof(VORN_CURCONN, szUser) == 24);
static_assert(offsetof(VORN_CURCONN, type) == 40);
static_assert(sizeof(VORN_CURCONN) == 64);
HAS_TYPE(VORN_CURCONN::pid, std::uint32_t);
HAS_TYPE(VORN_CURCONN::szHost, const char*);
HAS_TYPE(VORN_CURCONN::szUser, const char*);
HAS_TYPE(VORN_CURCONN::type, std::uint32_t);
static_assert(offsetof(VORN_FINDING, szSubject) == 0);
static_assert(offsetof(VORN_FINDING, state) == 8);
static_assert(offsetof(VORN_FINDING, costsAnswers) == 12);
static_assert(offsetof(VORN_FINDING, szText) == 16);
static_assert(offsetof(VORN_FINDING, szAdvice) == 24);
static_assert(sizeof(VORN_FINDING) == 64);
HAS_TYPE(VORN_FINDING::szSubject, const char*);
HAS_TYPE(VORN_FINDING::state, std::int32_t);
HAS_TYPE(VORN_FINDING::costsAnswers, std::int32_t);
HAS_TYPE(VORN_FINDING::szText, const char*);
HAS_TYPE(VORN_FINDING::szAdvice, const char*);
static_assert(offsetof(KLIBC_PROC, ppid) == 4);
static_assert(sizeof(KLIBC_PROC) == 8);
HAS_TYPE(KLIBC_PROC::ppid, std::int32_t);
static_assert(sizeof(StringBundle) == sizeof(void*) && !std::is_polymorphic_v<StringBundle>);

// Its numbers.
static_assert(KLIBC_ERR_RESOURCE == 0x0100 && KLIBC_ERR_NOT_FOUND == 0x0700 &&
              KLIBC_ERR_BAD_PARAM == 0x0D00 && KLIBC_ERR_INTERNAL == 0x2A00);
static_assert(KLIBC_ENUM_DIRECTORIES == 0x40);
static_assert(VORN_CURCONN_SSH == 10);
static_assert(VORN_FINDING_OK == 0 && VORN_FINDING_WARNING == 1 && VORN_FINDING_MISSING == 2);
static_assert(VORN_FINDINGS_OF_ANSWERS == 0 && VORN_FINDINGS_OF_HOST == 1);
static_assert(VORN_SERVICE_INSTALLED == 1 && VORN_SERVICE_RUNNING == 2 &&
              VORN_SERVICE_ELSEWHERE == 4);

// What the library supplies.
HAS_TYPE(VORNEnumOpenedFile, int(Files&, int));
HAS_TYPE(EnumOpenedFile, int(Files&, int));
HAS_TYPE(VORNSortOpenedFile, void(Files&, Text, bool));
HAS_TYPE(VORNGetLastAccessTime, int(Files&));
HAS_TYPE(GetKickableServiceList, void(std::list<Text>&));
HAS_TYPE(gszKickableServiceTable, const char* const[5]);
HAS_TYPE(GetProcOpenedFileInVolume, int(Files&));
HAS_TYPE(FilterPath, int(Files&, int));
HAS_TYPE(GetServiceName, int(Files&));
HAS_TYPE(UpdateConnectionInfo, int(Files&));
HAS_TYPE(EraseAdjacentDuplicates, int(Files&));
HAS_TYPE(LabelHidden, int(Files&));
HAS_TYPE(LabelFolder, int(Files&));
HAS_TYPE(PathBeginWithVolume, bool(const Text&));
HAS_TYPE(IsNumericalDir, bool(Text));
HAS_TYPE(IsValidNumber, bool(const Text&));
HAS_TYPE(NameGet, bool(const Text&, Text&));
HAS_TYPE(NameI18nGet, bool(const Text&, Text&, std::unordered_map<Text, Text>&));
HAS_TYPE(OpenedFile::mapJsonColumn, const std::map<int, Text>);

using Setter = int (OpenedFile::*)(const Text&);
HAS_MEMBER(setPid, Setter);
HAS_MEMBER(setAndCheckPid, Setter);
HAS_MEMBER(setFullPath, Setter);
HAS_MEMBER(setPath, Setter);
HAS_MEMBER(setServiceName, Setter);
HAS_MEMBER(setHost, Setter);
HAS_MEMBER(setUser, Setter);
HAS_MEMBER(setFilename, Setter);
HAS_MEMBER(setTime, Setter);
using Getter = Text (OpenedFile::*)();
HAS_MEMBER(getPidStr, Getter);
HAS_MEMBER(getService, Getter);
HAS_MEMBER(getUser, Getter);
HAS_MEMBER(getHost, Getter);
HAS_MEMBER(getPath, Getter);
HAS_MEMBER(getFilename, Getter);
HAS_MEMBER(getFullPath, Getter);
HAS_MEMBER(getTime, Getter);
HAS_MEMBER(setIsHidden, void (OpenedFile::*)());
HAS_MEMBER(setIsFolder, void (OpenedFile::*)());
HAS_MEMBER(isHidden, bool (OpenedFile::*)());
HAS_MEMBER(isFolder, bool (OpenedFile::*)());
HAS_MEMBER(isMatchSame, bool (OpenedFile::*)(const Text&, MEMBER));
HAS_MEMBER(isMatchKeyword, bool (OpenedFile::*)(const Text&, MEMBER));
HAS_MEMBER(toJson, void (OpenedFile::*)(Json::Value&));
HAS_MEMBER(timeToJson, void (OpenedFile::*)(Json::Value&));
static_assert(std::is_same_v<decltype(&OpenedFile::Compare::operator()),
                             bool (OpenedFile::Compare::*)(const OpenedFile&, const OpenedFile&)>);
static_assert(std::is_constructible_v<OpenedFile::Compare, const Text&, bool>);

// Callers build records and functors themselves, so their size is theirs as well: two flags, the
// full path and seven columns; a column and a direction.
static_assert(sizeof(OpenedFile) == 8 + 8 * sizeof(Text));
static_assert(sizeof(OpenedFile::Compare) == 8);
static_assert(!std::is_polymorphic_v<OpenedFile>);
static_assert(MEMBER_SERVICE == 0 && MEMBER_PID == 1 && MEMBER_USER == 2 && MEMBER_HOST == 3 &&
              MEMBER_PATH == 4 && MEMBER_FILENAME == 5 && MEMBER_TIME == 6);
static_assert(ENUM_BY_SHARE == 0 && ENUM_BY_VOLUME == 1);

}  // namespace
