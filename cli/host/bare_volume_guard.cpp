// SPDX-License-Identifier: MIT
#include "cli/host/bare_volume_guard.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <optional>

#include "cli/host/descriptor_links.h"
#include "support/numbers.h"
#include "support/text.h"

namespace cli {
namespace {

BareVolumeGuard* guard = nullptr;

/** The pid in "/proc/<pid>/fd/<n>"; nothing for another link. */
std::optional<int> PidOf(std::string_view link) {
    if (!support::ConsumePrefix(link, "/proc/")) {
        return std::nullopt;
    }
    const auto pid = support::TakeNumber<unsigned>(link);
    const bool isDescriptor =
        pid && support::ConsumePrefix(link, "/fd/") && support::ParseNumber<unsigned>(link);
    return isDescriptor ? std::optional<int>(*pid) : std::nullopt;
}

}  // namespace

BareVolumeGuard::BareVolumeGuard() {
    guard = this;
}

BareVolumeGuard::~BareVolumeGuard() {
    guard = nullptr;
}

std::string BareVolumeNotice(const std::set<int>& pids) {
    if (pids.empty()) {
        return {};
    }
    // Whoever starts processes decides how many there are.
    constexpr size_t kShown = 10;
    const auto end = std::next(pids.begin(), static_cast<long>(std::min(pids.size(), kShown)));
    return fmt::format(
        "left out an object named \"/volume\", which is in no volume; held open by: {}{}",
        fmt::join(pids.begin(), end, ", "),
        pids.size() > kShown ? fmt::format(" and {} more", pids.size() - kShown) : "");
}

bool BareVolumeGuard::KeepsBack(std::string_view link, std::string_view target) {
    if (target != "/volume") {
        return false;
    }
    const std::optional<int> pid = PidOf(link);
    if (pid) {
        const std::lock_guard<std::mutex> lock(mutex_);
        pids_.insert(*pid);
    }
    return pid.has_value();
}

namespace {

ssize_t GuardedReadlink(const char* link, char* buffer, size_t size) {
    const ssize_t length = DescriptorLinks::Read(link, buffer, size);
    if (guard == nullptr || length < 0 ||
        !guard->KeepsBack(link, {buffer, static_cast<size_t>(length)})) {
        return length;
    }
    // Readers may count on a buffer that a failure leaves as it was, which is mostly zero.
    std::memset(buffer, 0, static_cast<size_t>(length));
    errno = ENOENT;
    return -1;
}

}  // namespace
}  // namespace cli

// The dynamic linker finds this one first: it is the program's.
extern "C" __attribute__((visibility("default"))) ssize_t readlink(const char* link, char* buffer,
                                                                   size_t size) noexcept {
    return cli::GuardedReadlink(link, buffer, size);
}
