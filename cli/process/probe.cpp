#include "cli/process/probe.h"

#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "cli/host/volumes.h"
#include "cli/process/gate_protocol.h"

namespace cli {

void VolumeProbes::Start() {
    Stop();
    for (const std::string& volume : MountedVolumes()) {
        const pid_t probe = fork();
        if (probe == 0) {
            DropOutputs();
            struct statfs space {};
            struct stat root {};
            statfs(volume.c_str(), &space);
            stat(volume.c_str(), &root);
            _exit(0);
        }
        if (probe > 0) {
            probes_.emplace_back(probe, volume);
        }
    }
}

std::vector<std::string> VolumeProbes::Unanswered() {
    std::vector<std::string> unanswered;
    for (const auto& [probe, volume] : probes_) {
        if (waitpid(probe, nullptr, WNOHANG) == 0) {
            unanswered.push_back(volume);
        }
    }
    return unanswered;
}

void VolumeProbes::Stop() {
    for (const auto& probe : probes_) {
        // One that has ended already is reaped; one that hangs ends whenever it can.
        if (waitpid(probe.first, nullptr, WNOHANG) == 0) {
            kill(probe.first, SIGKILL);
        }
    }
    probes_.clear();
}

}  // namespace cli
