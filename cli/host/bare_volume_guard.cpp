#include "cli/host/bare_volume_guard.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <iterator>
#include <optional>

namespace cli {
namespace {

VolumeGuard* guard = nullptr;

/** Takes a text off the front. */
bool Take(std::string_view& text, std::string_view front) {
    if (text.substr(0, front.size()) != front) {
        return false;
    }
    text.remove_prefix(front.size());
    return true;
}

std::optional<int> TakeNumber(std::string_view& text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || number < 0) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<size_t>(end - text.data()));
    return number;
}

/** The pid in "/proc/<pid>/fd/<n>"; nothing for another link. */
std::optional<int> PidOf(std::string_view link) {
    if (!Take(link, "/proc/")) {
        return std::nullopt;
    }
    const std::optional<int> pid = TakeNumber(link);
    const bool isDescriptor = pid && Take(link, "/fd/") && TakeNumber(link) && link.empty();
    return isDescriptor ? pid : std::nullopt;
}

}  // namespace

VolumeGuard::VolumeGuard() {
    guard = this;
}

VolumeGuard::~VolumeGuard() {
    guard = nullptr;
}

std::string VolumeGuard::Notice() const {
    if (pids_.empty()) {
        return {};
    }
    // Whoever starts processes decides how many there are.
    constexpr size_t kShown = 10;
    const auto end = std::next(pids_.begin(), static_cast<long>(std::min(pids_.size(), kShown)));
    return fmt::format(
        "left out an object named \"/volume\", which is in no volume; held open by: {}{}",
        fmt::join(pids_.begin(), end, ", "),
        pids_.size() > kShown ? fmt::format(" and {} more", pids_.size() - kShown) : "");
}

bool VolumeGuard::KeepsBack(std::string_view link, std::string_view target) {
    if (target != "/volume") {
        return false;
    }
    const std::optional<int> pid = PidOf(link);
    if (pid) {
        pids_.insert(*pid);
    }
    return pid.has_value();
}

namespace {

ssize_t GuardedReadlink(const char* link, char* buffer, size_t size) {
    const ssize_t length = readlinkat(AT_FDCWD, link, buffer, size);
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
