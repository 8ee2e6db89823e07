// SPDX-License-Identifier: MIT
#include "platform/linux/sockets/proc_net_tcp.h"

#include <cstring>
#include <string>

#include "platform/linux/processes/proc_file.h"
#include "support/numbers.h"
#include "support/text.h"

namespace vornplatform {
namespace {

constexpr std::size_t kInodeField = 9;

/** Room for some 200,000 sockets. */
constexpr std::size_t kMaxSize = std::size_t{32} << 20;

struct Endpoint {
    IpAddress address{};
    std::uint16_t port = 0;
};

/** Takes the next field off a line; empty at its end. */
std::string_view TakeField(std::string_view& line) {
    line = support::TrimLeft(line, " ");
    return support::TakeUntil(line, ' ');
}

/** An address is written as 32-bit words, each as this host stores it: 0100007F is 127.0.0.1. */
std::optional<IpAddress> ParseAddress(std::string_view text) {
    constexpr std::size_t kDigits = 8;
    std::uint32_t words[4];
    const std::size_t count = text.size() / kDigits;
    if (text.size() % kDigits != 0 || (count != 1 && count != 4)) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const auto word =
            support::ParseNumber<std::uint32_t>(text.substr(i * kDigits, kDigits), 16);
        if (!word) {
            return std::nullopt;
        }
        words[i] = *word;
    }
    if (count == 1) {
        return MapIpv4(words);
    }
    IpAddress address{};
    std::memcpy(address.data(), words, address.size());
    return address;
}

std::optional<Endpoint> ParseEndpoint(std::string_view text) {
    const auto address = ParseAddress(support::TakeUntil(text, ':'));
    const auto port = support::ParseNumber<std::uint16_t>(text, 16);
    return address && port ? std::optional<Endpoint>(Endpoint{*address, *port}) : std::nullopt;
}

TcpState ToState(unsigned state) {
    constexpr unsigned kEstablished = 0x01;
    constexpr unsigned kCloseWait = 0x08;
    constexpr unsigned kListen = 0x0A;
    switch (state) {
        case kEstablished:
        case kCloseWait:
            return TcpState::kEstablished;
        case kListen:
            return TcpState::kListen;
        default:
            return TcpState::kOther;
    }
}

}  // namespace

// 0: 0100007F:08AE 0200007F:91B9 01 00000000:00000000 00:00000000 00000000  0 0 29024 1 ...
std::optional<TcpSocket> ParseProcNetTcpLine(std::string_view line) {
    TakeField(line);
    const auto local = ParseEndpoint(TakeField(line));
    const auto peer = ParseEndpoint(TakeField(line));
    const auto state = support::ParseNumber<unsigned>(TakeField(line), 16);
    for (std::size_t field = 4; field < kInodeField; ++field) {
        TakeField(line);
    }
    const auto inode = support::ParseNumber<std::uint64_t>(TakeField(line));
    if (!local || !peer || !state || !inode) {
        return std::nullopt;
    }
    TcpSocket socket;
    socket.state = ToState(*state);
    socket.local = local->address;
    socket.localPort = local->port;
    socket.peer = peer->address;
    socket.inode = *inode;
    return socket;
}

void ParseProcNetTcp(std::string_view text, std::vector<TcpSocket>& sockets) {
    while (!text.empty()) {
        if (const auto socket = ParseProcNetTcpLine(support::TakeLine(text))) {
            sockets.push_back(*socket);
        }
    }
}

std::optional<std::vector<TcpSocket>> ReadProcNetTcp() {
    std::optional<std::vector<TcpSocket>> sockets;
    for (const char* path : {"/proc/net/tcp", "/proc/net/tcp6"}) {
        if (const auto text = ReadProcFile(path, kMaxSize)) {
            ParseProcNetTcp(*text, sockets ? *sockets : sockets.emplace());
        }
    }
    return sockets;
}

}  // namespace vornplatform
