#ifndef VORN_CLI_PROCESS_PROBE_H
#define VORN_CLI_PROCESS_PROBE_H

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace cli {

/** Asks each volume for a sign of life, in a process of its own: the question may never return. */
class VolumeProbes {
public:
    VolumeProbes() = default;
    ~VolumeProbes() { Stop(); }
    VolumeProbes(const VolumeProbes&) = delete;
    VolumeProbes& operator=(const VolumeProbes&) = delete;

    /** Asks (`statfs`, `stat`), after giving up what was asked before. */
    void Start();
    /** Volumes that haven't answered yet. */
    std::vector<std::string> Unanswered();

private:
    void Stop();

    std::vector<std::pair<pid_t, std::string>> probes_;
};

}  // namespace cli

#endif
