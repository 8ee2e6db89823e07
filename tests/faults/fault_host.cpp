// SPDX-License-Identifier: MIT
#include "tests/faults/fault_host.h"

#include <exception>
#include <filesystem>
#include <iterator>
#include <new>
#include <stdexcept>

#include "tests/unit/support/failing_calls.h"

namespace unit {

using VORN::FileHandle::OpenedFile;

namespace {

std::string Shown(OpenedFile& file) {
    std::string text = file.getPidStr() + " " + file.getFullPath();
    for (const std::string& column : {file.getPath(), file.getFilename(), file.getService(),
                                      file.getHost(), file.getUser(), file.getTime()}) {
        text += column.empty() ? "" : " " + column;
    }
    return text + (file.isHidden() ? " hidden" : "") + (file.isFolder() ? " folder" : "");
}

}  // namespace

void FaultHost::SetUp() {
    platform.shares = {
        {"photo", "/volume1/photo"}, {"docs", "/volume2/docs"}, {"music", "/volume3/music"}};
    platform.volumes = {"/volume1", "/volume2", "/volume3"};
    platform.hiddenDirectories = {"/@eaDir", "/@tmp", "/#recycle"};
    platform.directoryChecks = {{"/volume2/docs/dir", 1}};
    platform.connections = {{21, "10.0.0.5", "ann", 1}, {20, "10.0.0.6", "bob", 10}};
    platform.processes = {{22, {19}}, {19, {20}}, {20, {1}}, {24, {1}}};
    platform.bundles["service"] = {
        {"internal_service", "Internal"}, {"ssh", "SSH"}, {"cron", "Cron"}, {"smb", "SMB"}};
    AddProcess("21", "SMBService.slice", "smb plain",
               {"/volume1/photo/b", "/volume1/photo/@tmp/a"});
    AddProcess("22", "sshd.slice", "ssh plain", {"/volume2/docs/dir"});
    AddProcess("23", "ftpd.slice", "Ftp", {"/volume3/music/c"});
    AddProcess("24", "sshd.slice", "ssh plain", {"/volume3/music/d"});
    const std::string folder = "/usr/lib/systemd/system/";
    platform.sectionValues[{folder + "SMBService.slice", "X-Vornalis", "NameI18n"}] = "service:smb";
    platform.sectionValues[{folder + "sshd.slice", "X-Vornalis", "NameI18n"}] = "service:ssh";
    for (const char* path : {"/volume1/photo/b", "/volume1/photo/@tmp/a", "/volume2/docs/dir",
                             "/volume3/music/c", "/volume3/music/d"}) {
        libc.statuses[path] = {0, 1709816709};
    }
}

std::string FaultHost::Call(const std::string& function, std::list<std::string>& services) {
    using namespace VORN::FileHandle;
    try {
        if (function == "kickable") {
            GetKickableServiceList(services);
            return "0";
        }
        return std::to_string(function == "times"   ? VORNGetLastAccessTime(files)
                              : function == "share" ? VORNEnumOpenedFile(files, ENUM_BY_SHARE)
                                                    : VORNEnumOpenedFile(files, ENUM_BY_VOLUME));
    } catch (const std::logic_error&) {
        return "throws logic_error";
    }
}

Outcome FaultHost::Run(const std::string& function) {
    files.clear();
    if (function == "times") {
        files = Records(
            {{"21", "/volume1/photo/b"}, {"22", "/volume2/docs/dir"}, {"24", "/volume3/music/d"}});
    }
    TheFailingCalls().made.clear();
    libc.logLines.clear();
    platform.errorSets.clear();
    std::list<std::string> services;
    Outcome outcome;
    outcome.result = Call(function, services);
    for (const LogLine& line : libc.logLines) {
        outcome.log.push_back(std::to_string(line.priority) + " " + line.text);
    }
    for (const ScriptedPlatform::ErrorSet& set : platform.errorSets) {
        outcome.errors.push_back(Hex(set.code) + " " + set.source + ":" + std::to_string(set.line));
    }
    for (OpenedFile& file : files) {
        outcome.list.push_back(Shown(file));
    }
    outcome.list.insert(outcome.list.end(), services.begin(), services.end());
    libc.logLines.clear();
    platform.errorSets.clear();
    return outcome;
}

std::map<std::string, int> FaultHost::CallsOf(const std::string& function) {
    Run(function);
    return TheFailingCalls().made;
}

void FaultHost::FailCall(const std::string& call, int number) {
    TheFailingCalls().numbers = {{call, {number}}};
}

void FaultHost::FailNoCall() {
    TheFailingCalls().numbers.clear();
}

size_t OpenDescriptors() {
    const std::filesystem::directory_iterator folder("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(folder), end(folder)));
}

}  // namespace unit
