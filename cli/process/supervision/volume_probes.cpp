// SPDX-License-Identifier: MIT
#include "cli/process/supervision/volume_probes.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>

#include "cli/host/volumes.h"
#include "support/descriptor.h"

namespace cli {
namespace {

using Clock = std::chrono::steady_clock;

/** A process that asks one volume. */
class Probe {
public:
    explicit Probe(std::string volume) : volume_(std::move(volume)) {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) {
            return;
        }
        end_ = support::Descriptor(ends[0]);
        const support::Descriptor held(ends[1]);
        pid_ = fork();
        if (pid_ == 0) {
            Ask();
        }
    }
    Probe(Probe&& other) noexcept
        : volume_(std::move(other.volume_)),
          end_(std::move(other.end_)),
          pid_(std::exchange(other.pid_, -1)) {}
    Probe& operator=(Probe&&) = delete;
    ~Probe() {
        if (pid_ > 0) {
            // One that has ended is only reaped; one that hangs ends whenever it can.
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, answered_ ? 0 : WNOHANG);
        }
    }

    const std::string& Volume() const { return volume_; }
    bool IsSilent() const { return pid_ > 0 && !answered_; }
    /** Its end closes the pipe. Negative, which poll() passes over, where there is none to wait
     * for. */
    int Fd() const { return IsSilent() ? end_.Get() : -1; }
    void SetAnswered() { answered_ = true; }

private:
    [[noreturn]] void Ask() const {
        // Nobody must wait for this process to let go of a pipe or a terminal.
        for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            close(fd);
        }
        struct statfs space {};
        struct stat root {};
        statfs(volume_.c_str(), &space);
        stat(volume_.c_str(), &root);
        _exit(0);
    }

    std::string volume_;
    support::Descriptor end_;
    pid_t pid_ = -1;
    bool answered_ = false;
};

/** Waits until all have answered or the time is up. */
void Await(std::vector<Probe>& probes, Clock::time_point deadline) {
    while (std::any_of(probes.begin(), probes.end(), [](const Probe& p) { return p.IsSilent(); })) {
        std::vector<struct pollfd> watched;
        for (const Probe& probe : probes) {
            watched.push_back({probe.Fd(), POLLIN, 0});
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        const int ready = left.count() > 0
                              ? poll(watched.data(), watched.size(), static_cast<int>(left.count()))
                              : 0;
        if (ready == 0 || (ready < 0 && errno != EINTR)) {
            return;
        }
        for (size_t i = 0; ready > 0 && i < probes.size(); ++i) {
            if (watched[i].revents != 0) {
                probes[i].SetAnswered();
            }
        }
    }
}

}  // namespace

std::vector<std::string> SilentVolumes(std::chrono::milliseconds patience) {
    std::vector<Probe> probes;
    for (const std::string& volume : MountedVolumes()) {
        probes.emplace_back(volume);
    }
    Await(probes, Clock::now() + patience);
    std::vector<std::string> silent;
    for (const Probe& probe : probes) {
        if (probe.IsSilent()) {
            silent.push_back(probe.Volume());
        }
    }
    return silent;
}

}  // namespace cli
