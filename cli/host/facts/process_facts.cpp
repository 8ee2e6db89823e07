// SPDX-License-Identifier: MIT
#include "cli/host/facts/process_facts.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <climits>

#include "support/folder.h"
#include "support/numbers.h"
#include "support/process_text.h"
#include "support/read_all.h"
#include "support/text.h"

namespace cli {
namespace {

constexpr std::uint64_t kNanoseconds = 1'000'000'000;

std::uint64_t TicksASecond() {
    return static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK));
}

std::uint64_t Nanoseconds(clockid_t clock) {
    struct timespec now {};
    clock_gettime(clock, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * kNanoseconds +
           static_cast<std::uint64_t>(now.tv_nsec);
}

/** A file of the process, its last line whole; nothing when the process has ended. */
std::optional<std::string> Read(int folder, const std::string& name) {
    constexpr size_t kLimit = size_t{1} << 20;
    const support::Descriptor file(openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC));
    std::string text;
    if (!file) {
        return std::nullopt;
    }
    const support::ReadEnd end = support::ReadAll(file.Get(), kLimit, text);
    if (end == support::ReadEnd::kError) {
        return std::nullopt;
    }
    if (end == support::ReadEnd::kLimit) {
        text.resize(text.rfind('\n') + 1);
    }
    return text;
}

/** Where a link leads; empty where that can't be told. */
std::string Target(int folder, const std::string& link) {
    std::array<char, PATH_MAX> target{};
    const ssize_t length = readlinkat(folder, link.c_str(), target.data(), target.size());
    return std::string(target.data(), length > 0 ? static_cast<size_t>(length) : 0);
}

/** A file of this very process about one of its descriptors. */
std::string OwnFile(const char* folder, const support::Descriptor& file) {
    return "/proc/self/" + std::string(folder) + '/' + std::to_string(file.Get());
}

FileFacts FactsOf(const struct statx& status) {
    constexpr std::uint64_t kBlock = 512;  // of stx_blocks, whatever the file system's own are
    FileFacts facts;
    facts.regular = S_ISREG(status.stx_mode);
    facts.size = status.stx_size;
    facts.space = status.stx_blocks * kBlock;
    facts.modified = status.stx_mtime.tv_sec;
    facts.inode = status.stx_ino;
    facts.device = makedev(status.stx_dev_major, status.stx_dev_minor);
    return facts;
}

}  // namespace

BootTicks BootTicksNow() {
    return Nanoseconds(CLOCK_BOOTTIME) / (kNanoseconds / TicksASecond());
}

std::optional<ProcessFacts> ProcessFacts::Of(const std::string& pid) {
    const auto number = support::ParseNumber<pid_t>(pid);
    if (!number) {
        return std::nullopt;
    }
    support::Descriptor folder(
        open(("/proc/" + std::to_string(*number)).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    const auto text = folder ? Read(folder.Get(), "stat") : std::nullopt;
    const auto stat = text ? support::ParseProcessStat(*text) : std::nullopt;
    if (!stat) {
        return std::nullopt;
    }
    return ProcessFacts(std::move(folder), stat->startTime);
}

std::time_t ProcessFacts::Started() const {
    const std::uint64_t boot = Nanoseconds(CLOCK_REALTIME) - Nanoseconds(CLOCK_BOOTTIME);
    return static_cast<std::time_t>((boot + start_ * (kNanoseconds / TicksASecond())) /
                                    kNanoseconds);
}

std::optional<std::string> ProcessFacts::Command() const {
    auto name = Read(folder_.Get(), "comm");
    if (name && support::EndsWith(*name, "\n")) {
        name->pop_back();
    }
    return name;
}

std::optional<uid_t> ProcessFacts::Owner() const {
    const auto text = Read(folder_.Get(), "status");
    const auto users = text ? support::ParseProcessUsers(*text) : std::nullopt;
    return users ? std::optional<uid_t>(users->effective) : std::nullopt;
}

std::optional<uid_t> ProcessFacts::Login() const {
    const auto text = Read(folder_.Get(), "loginuid");
    return text ? support::ParseAuditId(*text) : std::nullopt;
}

std::optional<std::string> ProcessFacts::Unit() const {
    const auto text = Read(folder_.Get(), "cgroup");
    const std::string unit = text ? UnitOf(*text) : "";
    return unit.empty() ? std::nullopt : std::optional<std::string>(unit);
}

void ProcessFacts::ReadDescriptors() {
    descriptors_.emplace();
    const support::Descriptor folder(
        openat(folder_.Get(), "fd", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) {
        return;
    }
    // A process that ends meanwhile leaves what was seen until then.
    support::VisitFolder(folder.Get(), [&](const dirent64& entry) {
        const auto number = support::ParseNumber<int>(entry.d_name);
        std::string target = number ? Target(folder.Get(), entry.d_name) : "";
        if (support::StartsWith(target, "/")) {
            (*descriptors_)[std::move(target)].push_back(*number);
        }
        return true;
    });
}

const std::vector<int>& ProcessFacts::DescriptorsOf(const std::string& fullPath) {
    static const std::vector<int> kNone;
    if (!descriptors_) {
        ReadDescriptors();
    }
    const auto found = descriptors_->find(fullPath);
    return found != descriptors_->end() ? found->second : kNone;
}

support::Descriptor ProcessFacts::Pin(int descriptor, const std::string& fullPath) const {
    support::Descriptor file(
        openat(folder_.Get(), ("fd/" + std::to_string(descriptor)).c_str(), O_PATH | O_CLOEXEC));
    if (file && Target(AT_FDCWD, OwnFile("fd", file)) != fullPath) {
        file.Reset();
    }
    return file;
}

std::optional<OpenState> ProcessFacts::StateOf(int descriptor, const std::string& fullPath) const {
    const support::Descriptor file = Pin(descriptor, fullPath);
    const auto own = file ? Read(AT_FDCWD, OwnFile("fdinfo", file)) : std::nullopt;
    const auto text = Read(folder_.Get(), "fdinfo/" + std::to_string(descriptor));
    if (!own || !text || FileIn(*own) != FileIn(*text)) {
        return std::nullopt;
    }
    return ParseOpenState(*text);
}

std::optional<FileFacts> ProcessFacts::FileOf(int descriptor, const std::string& fullPath) const {
    const support::Descriptor file = Pin(descriptor, fullPath);
    struct statx status {};
    // What the kernel remembers of it does.
    if (!file || statx(file.Get(), "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_BASIC_STATS,
                       &status) != 0) {
        return std::nullopt;
    }
    return FactsOf(status);
}

}  // namespace cli
