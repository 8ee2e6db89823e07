// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <poll.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>

#include "cli/commands/commands.h"
#include "cli/events/destination.h"
#include "cli/events/recorder.h"
#include "cli/events/volume_looks.h"
#include "cli/host/rights.h"
#include "cli/host/volumes.h"
#include "cli/process/output.h"
#include "cli/process/signals.h"
#include "cli/question/meaning.h"
#include "cli/text/escape.h"
#include "support/text.h"

namespace cli {
namespace {

using Clock = std::chrono::steady_clock;

/** Which volumes are to be watched, and what of them is told. */
struct Scope {
    std::vector<std::string> volumes;
    std::vector<std::string> paths;
};

Scope ScopeOf(const std::vector<std::string>& given) {
    Scope scope{VolumesToAsk(), {}};
    if (given.empty()) {
        scope.paths = scope.volumes;
        return scope;
    }
    scope.paths = ResolvedPaths(given, scope.volumes);
    const auto unasked = [&](const std::string& volume) {
        return std::none_of(scope.paths.begin(), scope.paths.end(), [&](const std::string& path) {
            return support::IsAtOrBelow(path, volume);
        });
    };
    scope.volumes.erase(std::remove_if(scope.volumes.begin(), scope.volumes.end(), unasked),
                        scope.volumes.end());
    return scope;
}

/** Has room for a descriptor each; gives how many processes may be remembered by one. */
size_t RoomForProcesses() {
    constexpr rlim_t kWanted = 4096;
    constexpr rlim_t kOthers = 512;
    struct rlimit limit {};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::max(limit.rlim_cur, std::min(kWanted, limit.rlim_max));
    setrlimit(RLIMIT_NOFILE, &limit);
    getrlimit(RLIMIT_NOFILE, &limit);
    return std::clamp(limit.rlim_cur, 2 * kOthers, kWanted) - kOthers;
}

Clock::duration Seconds(double seconds) {
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

class Events {
public:
    explicit Events(const Options& options)
        : options_(options),
          scope_(ScopeOf(options.question.selection.paths)),
          to_(options.journal ? ToJournal(signals_.Fd()) : ToStandardOutput(signals_.Fd())),
          recorder_(watch_, scope_.paths, RoomForProcesses(), *to_.teller),
          looks_(scope_.paths, coverage_, *to_.teller, [this] { return to_.output->Flush(); }) {}

    int Run() {
        WatchVolumes();
        heartbeat_ = Clock::now() + Seconds(options_.heartbeatSeconds);
        while (to_.output->Flush() && LookWhenItIsTime() && WaitForEvents()) {
            recorder_.TellSome();
            if (Clock::now() >= heartbeat_) {
                to_.teller->Plain("heartbeat", MomentNow());
                heartbeat_ = Clock::now() + Seconds(options_.heartbeatSeconds);
            }
        }
        return TellTheRest();
    }

private:
    void WatchVolumes() {
        if (const std::string missing = MissingRights(OwnRights()); !missing.empty()) {
            Complain(missing);
        }
        for (const std::string& volume : scope_.volumes) {
            const std::string reason = watch_.Add(volume);
            if (reason.empty()) {
                coverage_.watched.push_back(volume);
            } else {
                DoWithout(volume, reason);
            }
        }
        if (coverage_.watched.empty() && coverage_.lookedAt.empty()) {
            throw Failure("none of the volumes can be watched");
        }
        to_.teller->Started(MomentNow(), coverage_);
    }

    /** What the kernel doesn't tell of, looks may find. */
    void DoWithout(const std::string& volume, const std::string& reason) {
        const auto& seconds = options_.intervalSeconds;
        (seconds ? coverage_.lookedAt : coverage_.unwatched).push_back(volume);
        Complain(fmt::format("can't watch {}{}: {}", Escaped(volume, true),
                             seconds ? fmt::format(", looks at it every {} s", *seconds) : "",
                             reason));
    }

    /** The first time at once. @return false when it is to end */
    bool LookWhenItIsTime() {
        if (looks_.IsOver() || Clock::now() < look_) {
            return true;
        }
        const bool goesOn = looks_.Look() && to_.output->Flush();
        look_ = Clock::now() + Seconds(options_.intervalSeconds.value_or(kRetrySeconds));
        return goesOn;
    }

    /** Until there are some, or it is time; false when it is to end. */
    bool WaitForEvents() const {
        const Clock::time_point next = looks_.IsOver() ? heartbeat_ : std::min(heartbeat_, look_);
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
        // A closed pipe is told as an error whatever is asked for.
        struct pollfd watched[] = {
            {watch_.Fd(), POLLIN, 0}, {signals_.Fd(), POLLIN, 0}, {to_.reader, 0, 0}};
        poll(watched, 3, static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 1 << 30)));
        return watched[1].revents == 0 && (watched[2].revents & (POLLERR | POLLHUP)) == 0;
    }

    /**
     * What had happened before the signal, as far as the kernel's queue can have held it.
     *
     * @return the exit status
     */
    int TellTheRest() {
        constexpr int kReads = 256;
        for (int i = 0; i < kReads && recorder_.TellSome(); ++i) {
        }
        to_.teller->Plain("stopped", MomentNow());
        const bool told = to_.output->FlushLast();
        // What is left of them would end the process with the block that they are under.
        while (signals_.Next() != 0) {
        }
        return told || !options_.journal ? kFound : kFailed;
    }

    /** A first look that has failed is taken again. */
    static constexpr double kRetrySeconds = 2;

    const Options& options_;
    const Scope scope_;
    const Signals signals_{SIGINT, SIGTERM, SIGHUP};
    FileWatch watch_;
    Destination to_;
    Coverage coverage_;
    Recorder recorder_;
    VolumeLooks looks_;
    Clock::time_point heartbeat_;
    Clock::time_point look_;
};

}  // namespace

int EventsCommand(const Options& options) {
    return Events(options).Run();
}

}  // namespace cli
