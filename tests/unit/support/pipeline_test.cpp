// SPDX-License-Identifier: MIT
#include "tests/unit/support/pipeline_test.h"

namespace unit {

void PipelineTest::SetUp() {
    platform.shares = {{"photo", "/volume1/photo"}, {"docs", "/volume2/docs"}};
    platform.volumes = {"/volume1", "/volume2"};
    platform.hiddenDirectories = {"/@tmp"};
    platform.directoryChecks = {{"/volume2/docs/dir", 1}};
    platform.bundles["service"]["internal_service"] = "Internal";
    platform.connections = {{9, "10.0.0.5", "ann", 1}};
    AddProcess("9", "smb.slice", "SMB",
               {"/volume1/photo/b", "/volume1/photo/@tmp/a", "/volume1/photo/b", "/volume1/x/y"});
    AddProcess("10", "cron.slice", "Cron", {"/volume1/photo/b", "/volume2/docs/dir"});
}

void PipelineTest::AddProcess(const std::string& pid, const std::string& unit,
                              const std::string& service, const std::vector<std::string>& targets) {
    platform.directories["/proc"].push_back(pid);
    std::vector<std::string>& names = platform.directories["/proc/" + pid + "/fd/"];
    for (const std::string& target : targets) {
        names.push_back(std::to_string(names.size() + 3));
        libc.links["/proc/" + pid + "/fd/" + names.back()] = target;
    }
    libc.controlGroups[pid] = "12:cpu:/\n1:name=systemd:/" + unit + "/main\n0::/" + unit + "\n";
    const std::string unitFile = "/usr/lib/systemd/system/" + unit;
    libc.unitFiles.insert(unitFile);
    platform.sectionValues[{unitFile, "X-Vornalis", "Name"}] = service;
}

std::vector<std::string> PipelineTest::Scanned() {
    return {"9 /volume1/photo/b", "9 /volume1/photo/@tmp/a", "9 /volume1/photo/b",
            "9 /volume1/x/y",     "10 /volume1/photo/b",     "10 /volume2/docs/dir"};
}

std::vector<std::string> PipelineTest::PidsAndPaths() {
    std::vector<std::string> shown;
    for (VORN::FileHandle::OpenedFile& file : files) {
        shown.push_back(file.getPidStr() + " " + file.getPath());
    }
    return shown;
}

std::vector<std::string> PipelineTest::StagesRun() const {
    std::vector<std::string> stages;
    for (const std::string& call : journal.Calls()) {
        for (const char* mark : {"KLIBCFileEnumDir(/proc, ", "VORNShareEnum(", "StringBundle(",
                                 "VORNCurConnGet(", "VORNEAHiddenDirGet(", "KLIBCFileCheckDir("}) {
            const std::string stage = call.substr(0, call.find('('));
            if (call.rfind(mark, 0) == 0 && (stages.empty() || stages.back() != stage)) {
                stages.push_back(stage);
            }
        }
    }
    return stages;
}

}  // namespace unit
