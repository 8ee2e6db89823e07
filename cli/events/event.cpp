// SPDX-License-Identifier: MIT
#include "cli/events/event.h"

#include <fmt/format.h>
#include <sys/random.h>
#include <sys/utsname.h>

#include <array>
#include <chrono>

#include "cli/failure.h"
#include "support/read_file.h"
#include "support/text.h"

namespace cli {
namespace {

std::string RandomId() {
    std::array<unsigned char, 16> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw Failure("the kernel gives no random numbers");
    }
    std::string id;
    for (const unsigned char byte : bytes) {
        id += fmt::format("{:02x}", byte);
    }
    return id;
}

}  // namespace

Moment MomentNow() {
    const auto since = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(since).count();
}

Origin NewOrigin() {
    struct utsname names {};
    uname(&names);
    const std::string machine = support::ReadFile("/etc/machine-id");
    return {names.nodename, std::string(support::Trim(machine)), RandomId()};
}

const ProcessAnswer& ToldFile::Process() const {
    static const ProcessAnswer kUnknown;
    return process != nullptr ? *process : kUnknown;
}

}  // namespace cli
