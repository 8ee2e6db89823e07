// SPDX-License-Identifier: MIT
#include "platform/linux/sockets/kernel_ports.h"

#include "platform/linux/processes/proc_file.h"
#include "platform/linux/support/host_error.h"
#include "support/numbers.h"
#include "support/text.h"

namespace vornplatform {

// tcp 2049
// udp 2049
Ports ParseNfsPorts(std::string_view text) {
    Ports ports;
    while (!text.empty()) {
        std::string_view line = support::TakeLine(text);
        if (support::TakeUntil(line, ' ') != "tcp") {
            continue;
        }
        if (const auto port = support::ParseNumber<std::uint16_t>(line)) {
            ports.insert(*port);
        }
    }
    return ports;
}

Ports ReadNfsPorts() {
    try {
        const auto text = ReadProcHead("/proc/fs/nfsd/portlist");
        return text ? ParseNfsPorts(*text) : Ports();
    } catch (const HostError& error) {
        PassOnShortage(error);
        return {};
    }
}

}  // namespace vornplatform
