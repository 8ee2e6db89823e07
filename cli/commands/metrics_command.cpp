#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cli/answer/metrics.h"
#include "cli/commands/commands.h"
#include "cli/process/output.h"
#include "cli/text/escape.h"

namespace cli {
namespace {

/** A file beside its destination that is removed unless it took its place. */
class Successor {
public:
    explicit Successor(const std::string& path)
        : path_(path), temporary_(path + ".XXXXXX"), fd_(mkostemp(temporary_.data(), O_CLOEXEC)) {
        if (fd_ < 0) {
            Fail();
        }
    }
    ~Successor() {
        if (fd_ >= 0) {
            close(fd_);
            unlink(temporary_.c_str());
        }
    }
    Successor(const Successor&) = delete;
    Successor& operator=(const Successor&) = delete;

    void Write(std::string_view text) {
        while (!text.empty()) {
            const ssize_t written = write(fd_, text.data(), text.size());
            if (written < 0 && errno != EINTR) {
                Fail();
            }
            text.remove_prefix(written > 0 ? static_cast<size_t>(written) : 0);
        }
    }

    void TakePlace() {
        // The collector runs as another user.
        if (fchmod(fd_, 0644) != 0 || fsync(fd_) != 0 ||
            std::rename(temporary_.c_str(), path_.c_str()) != 0) {
            Fail();
        }
        close(fd_);
        fd_ = -1;
    }

private:
    [[noreturn]] void Fail() const {
        throw Failure(
            fmt::format("can't write '{}': {}", Escaped(path_, true), std::strerror(errno)));
    }

    std::string path_;
    std::string temporary_;
    int fd_;
};

}  // namespace

void ReplaceFile(const std::string& path, std::string_view text) {
    Successor successor(path);
    successor.Write(text);
    successor.TakePlace();
}

int MetricsCommand(const Options& options, Gate& gate) {
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    Snapshot snapshot = TakeSnapshot(options, gate);
    const std::chrono::duration<double> taken = Clock::now() - begin;
    const std::string text = MetricsText(snapshot, options, taken.count());
    if (!snapshot.notice.empty()) {
        Complain(snapshot.notice);
    }
    if (!options.outputFile.empty()) {
        ReplaceFile(options.outputFile, text);
        return kFound;
    }
    Output output(STDOUT_FILENO);
    output.Text() = text;
    output.Flush();
    return kFound;
}

}  // namespace cli
