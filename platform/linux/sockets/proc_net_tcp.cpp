#include "platform/linux/sockets/proc_net_tcp.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string>

#include "platform/linux/processes/proc_file.h"
#include "platform/linux/support/lines.h"

namespace vornplatform {
namespace {

constexpr std::size_t kInodeField = 9;

/** Room for some 200,000 sockets. */
constexpr std::size_t kMaxSize = std::size_t{32} << 20;

/** Takes the next field off a line; empty at its end. */
std::string_view TakeField(std::string_view& line) {
    const std::size_t begin = std::min(line.find_first_not_of(' '), line.size());
    const std::size_t end = std::min(line.find(' ', begin), line.size());
    const std::string_view field = line.substr(begin, end - begin);
    line.remove_prefix(end);
    return field;
}

template <typename Number>
bool ParseNumber(std::string_view text, int base, Number& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

/** An address is written as 32-bit words, each as this host stores it: 0100007F is 127.0.0.1. */
bool ParseAddress(std::string_view text, IpAddress& address) {
    constexpr std::size_t kDigits = 8;
    std::uint32_t words[4];
    const std::size_t count = text.size() / kDigits;
    if (text.size() % kDigits != 0 || (count != 1 && count != 4)) {
        return false;
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (!ParseNumber(text.substr(i * kDigits, kDigits), 16, words[i])) {
            return false;
        }
    }
    if (count == 1) {
        address = MapIpv4(words);
    } else {
        std::memcpy(address.data(), words, address.size());
    }
    return true;
}

bool ParseEndpoint(std::string_view text, IpAddress& address, std::uint16_t& port) {
    const std::size_t colon = text.find(':');
    return colon != std::string_view::npos && ParseAddress(text.substr(0, colon), address) &&
           ParseNumber(text.substr(colon + 1), 16, port);
}

TcpState ToState(unsigned state) {
    constexpr unsigned kEstablished = 0x01;
    constexpr unsigned kListen = 0x0A;
    return state == kEstablished ? TcpState::kEstablished
           : state == kListen    ? TcpState::kListen
                                 : TcpState::kOther;
}

}  // namespace

// 0: 0100007F:08AE 0200007F:91B9 01 00000000:00000000 00:00000000 00000000  0 0 29024 1 ...
std::optional<TcpSocket> ParseProcNetTcpLine(std::string_view line) {
    TcpSocket socket;
    std::uint16_t peerPort = 0;
    unsigned state = 0;
    TakeField(line);
    if (!ParseEndpoint(TakeField(line), socket.local, socket.localPort) ||
        !ParseEndpoint(TakeField(line), socket.peer, peerPort) ||
        !ParseNumber(TakeField(line), 16, state)) {
        return std::nullopt;
    }
    for (std::size_t field = 4; field < kInodeField; ++field) {
        TakeField(line);
    }
    if (!ParseNumber(TakeField(line), 10, socket.inode)) {
        return std::nullopt;
    }
    socket.state = ToState(state);
    return socket;
}

void ParseProcNetTcp(std::string_view text, std::vector<TcpSocket>& sockets) {
    while (!text.empty()) {
        if (const auto socket = ParseProcNetTcpLine(TakeLine(text))) {
            sockets.push_back(*socket);
        }
    }
}

bool ReadProcNetTcp(std::vector<TcpSocket>& sockets) {
    bool isRead = false;
    for (const char* path : {"/proc/net/tcp", "/proc/net/tcp6"}) {
        std::string text;
        if (ReadProcFile(path, kMaxSize, text)) {
            ParseProcNetTcp(text, sockets);
            isRead = true;
        }
    }
    return isRead;
}

}  // namespace vornplatform
