// SPDX-License-Identifier: MIT
#include <json/value.h>
#include <syslog.h>

#include <algorithm>
#include <cctype>
#include <sstream>

#include "src/filehandle_internal.h"
#include "vorn/platform/error.h"

namespace VORN {
namespace FileHandle {

namespace {

constexpr char kSource[] = "filehandle_opened_file";

int RejectArgument(const char* condition, int line) {
    syslog(LOG_ERR, "%s:%d Invaild Argument (%s)=[%d]\n", kSource, line, condition, 0);
    KLIBCErrSetEx(KLIBC_ERR_BAD_PARAM, kSource, line);
    return -1;
}

std::string ToUpper(std::string text) {
    // Bytes go to toupper as signed values: only ASCII letters change in the C locale.
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char byte) { return static_cast<char>(toupper(byte)); });
    return text;
}

}  // namespace

// The time column is left out on purpose, and with that it can't be sorted by.
const std::map<int, std::string> OpenedFile::mapJsonColumn = {
    {MEMBER_SERVICE, "service"}, {MEMBER_PID, "pid"},   {MEMBER_USER, "user"},
    {MEMBER_HOST, "host"},       {MEMBER_PATH, "path"}, {MEMBER_FILENAME, "filename"},
};

bool IsValidNumber(const std::string& text) {
    if (text.find_first_not_of("0123456789") != std::string::npos) {
        return false;
    }
    std::stringstream stream;
    stream << text;
    int number = 0;
    stream >> number;
    return !stream.fail();
}

int OpenedFile::setPid(const std::string& strPid) {
    if (strPid.empty()) {
        return RejectArgument("!strPid.empty()", 32);
    }
    columns_[MEMBER_PID] = strPid;
    return 0;
}

int OpenedFile::setAndCheckPid(const std::string& strPid) {
    if (strPid.empty()) {
        return RejectArgument("!strPid.empty()", 38);
    }
    if (!IsValidNumber(strPid)) {
        return RejectArgument("IsValidNumber(strPid)", 39);
    }
    return setPid(strPid);
}

int OpenedFile::setFullPath(const std::string& path) {
    if (path.empty()) {
        return RejectArgument("!path.empty()", 44);
    }
    fullPath_ = path;
    return 0;
}

int OpenedFile::setPath(const std::string& path) {
    if (path.empty()) {
        return RejectArgument("!path.empty()", 50);
    }
    columns_[MEMBER_PATH] = path;
    return 0;
}

int OpenedFile::setServiceName(const std::string& serviceName) {
    if (serviceName.empty()) {
        return RejectArgument("!serviceName.empty()", 56);
    }
    columns_[MEMBER_SERVICE] = serviceName;
    return 0;
}

int OpenedFile::setHost(const std::string& host) {
    if (host.empty()) {
        return RejectArgument("!host.empty()", 62);
    }
    columns_[MEMBER_HOST] = host;
    return 0;
}

int OpenedFile::setUser(const std::string& user) {
    if (user.empty()) {
        return RejectArgument("!user.empty()", 68);
    }
    columns_[MEMBER_USER] = user;
    return 0;
}

int OpenedFile::setFilename(const std::string& filename) {
    if (filename.empty()) {
        return RejectArgument("!filename.empty()", 74);
    }
    columns_[MEMBER_FILENAME] = filename;
    return 0;
}

int OpenedFile::setTime(const std::string& strTime) {
    if (strTime.empty()) {
        return RejectArgument("!strTime.empty()", 80);
    }
    columns_[MEMBER_TIME] = strTime;
    return 0;
}

void OpenedFile::setIsHidden() {
    hidden_ = true;
}
void OpenedFile::setIsFolder() {
    folder_ = true;
}

std::string OpenedFile::getPidStr() {
    return columns_[MEMBER_PID];
}
std::string OpenedFile::getService() {
    return columns_[MEMBER_SERVICE];
}
std::string OpenedFile::getUser() {
    return columns_[MEMBER_USER];
}
std::string OpenedFile::getHost() {
    return columns_[MEMBER_HOST];
}
std::string OpenedFile::getPath() {
    return columns_[MEMBER_PATH];
}
std::string OpenedFile::getFilename() {
    return columns_[MEMBER_FILENAME];
}
std::string OpenedFile::getFullPath() {
    return fullPath_;
}
std::string OpenedFile::getTime() {
    return columns_[MEMBER_TIME];
}
bool OpenedFile::isHidden() {
    return hidden_;
}
bool OpenedFile::isFolder() {
    return folder_;
}

bool OpenedFile::isMatchSame(const std::string& text, MEMBER member) {
    return text.empty() || columns_[member] == text;
}

bool OpenedFile::isMatchKeyword(const std::string& text, MEMBER member) {
    return text.empty() || ToUpper(columns_[member]).find(ToUpper(text)) != std::string::npos;
}

void OpenedFile::toJson(Json::Value& out) {
    for (const auto& [member, name] : mapJsonColumn) {
        out[name] = columns_[member];
    }
    // An integer on purpose: callers compare it with 0 and 1.
    out["hidden"] = hidden_ ? 1 : 0;
}

void OpenedFile::timeToJson(Json::Value& out) {
    out["time"] = columns_[MEMBER_TIME];
}

OpenedFile::Compare::Compare(const std::string& column, bool ascending)
    : column_(MEMBER_FILENAME), ascending_(ascending) {
    for (const auto& [member, name] : mapJsonColumn) {
        if (name == column) {
            column_ = static_cast<MEMBER>(member);
            break;
        }
    }
}

bool OpenedFile::Compare::operator()(const OpenedFile& a, const OpenedFile& b) {
    int order = a.columns_[column_].compare(b.columns_[column_]);
    if (order == 0) {
        order = a.columns_[MEMBER_PID].compare(b.columns_[MEMBER_PID]);
    }
    // The exact opposite, not "after": it reverses records that are equal, which callers rely on.
    return ascending_ ? order < 0 : order >= 0;
}

}  // namespace FileHandle
}  // namespace VORN
