// SPDX-License-Identifier: MIT
#include "slices/undo.h"

#include <unistd.h>

#include <string>

namespace slices {
namespace {

// Processes fork and end meanwhile.
bool RemoveGroup(const ServiceGroups& services, const std::string& group) {
    constexpr int kMostPasses = 1000;
    for (int i = 0; i < kMostPasses; ++i) {
        for (const pid_t pid : services.Members(group)) {
            services.Put(pid, "");
        }
        if (services.Remove(group)) {
            return true;
        }
    }
    return false;
}

}  // namespace

bool RemoveGroups(const ServiceGroups& services, const Names& slices) {
    bool areRemoved = true;
    for (const std::string& group : services.Names()) {
        areRemoved &= slices.count(group) == 0 || RemoveGroup(services, group);
    }
    return areRemoved;
}

bool AwaitRelease(const ServiceGroups& services) {
    constexpr int kMostLooks = 500;
    constexpr useconds_t kPause = 20'000;
    for (int i = 0; i < kMostLooks; ++i) {
        if (services.AreReleased()) {
            return true;
        }
        usleep(kPause);
    }
    return false;
}

}  // namespace slices
