// SPDX-License-Identifier: MIT
// Gives processes of named slices a line of the hierarchy name=systemd on hosts with control groups
// v2 alone.

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

#include "groups/service_hierarchy.h"
#include "slices/follower.h"
#include "slices/trouble.h"
#include "slices/undo.h"
#include "support/read_file.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUse = 2;
/** As of sysexits: starting again helps nothing. */
constexpr int kUnsuitable = 78;

constexpr char kUsage[] =
    "usage: vorn-slices            follows services until it is told to end\n"
    "       vorn-slices --undo     removes what it has made\n"
    "       vorn-slices --version\n";

/** Where else the hierarchy is mounted; empty where it is ours alone. */
std::string OtherMount() {
    for (const std::string& point :
         groups::HierarchyMounts(support::ReadFile("/proc/self/mountinfo"))) {
        if (point != groups::kServicesFolder) {
            return point;
        }
    }
    return "";
}

int Follow() {
    if (!slices::ServiceGroups().AreMounted()) {
        const std::string_view reason = groups::ReasonOf(groups::FindHierarchy());
        slices::LogError(std::string("no hierarchy name=systemd on ") + groups::kServicesFolder +
                         (reason.empty() ? "" : ": ") + std::string(reason));
        return kUnsuitable;
    }
    const std::string other = OtherMount();
    if (!other.empty()) {
        slices::LogError("the hierarchy name=systemd is somebody else's: it is mounted on " +
                         other);
        return kUnsuitable;
    }
    return slices::Follower().Run();
}

int Undo() {
    const slices::ServiceGroups services;
    if (!services.AreMounted()) {
        return 0;
    }
    const bool isOurs = OtherMount().empty();
    const std::vector<std::string> all = services.Names();
    const slices::Names slices =
        isOurs ? slices::Names(all.begin(), all.end()) : slices::FindNamedSlices();
    if (!slices::RemoveGroups(services, slices)) {
        slices::LogError("not every group could be removed");
        return kFailed;
    }
    if (isOurs && !slices::AwaitRelease(services)) {
        slices::LogError("the kernel still has the groups that were removed");
        return kFailed;
    }
    return 0;
}

int Run(int argc, char** argv) {
    const std::string_view option = argc == 2 ? argv[1] : "";
    if (argc == 1) {
        return Follow();
    }
    if (option == "--undo") {
        return Undo();
    }
    if (option == "--version") {
        std::puts("vorn-slices " VORN_VERSION);
        return 0;
    }
    std::fputs(kUsage, option == "--help" ? stdout : stderr);
    return option == "--help" ? 0 : kWrongUse;
}

}  // namespace

int main(int argc, char** argv) {
    umask(022);
    try {
        return Run(argc, argv);
    } catch (const std::exception& exception) {
        slices::LogError(exception.what());
        return kFailed;
    }
}
