#include "gate.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "gate_protocol.h"

namespace cli {
namespace {

constexpr std::array<int, 2> kOutputs = {STDOUT_FILENO, STDERR_FILENO};

/** Room for the two descriptors of one message. */
union Control {
    struct cmsghdr aligned;
    char bytes[CMSG_SPACE(sizeof(kOutputs))];
};

}  // namespace

void SendOutputs(int socket) {
    char byte = kGateOpened;
    struct iovec data {};
    data.iov_base = &byte;
    data.iov_len = 1;
    Control control{};
    struct msghdr message {};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control.bytes;
    message.msg_controllen = sizeof(control.bytes);
    struct cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(kOutputs));
    std::memcpy(CMSG_DATA(header), kOutputs.data(), sizeof(kOutputs));
    sendmsg(socket, &message, MSG_NOSIGNAL);
}

void DropOutputs() {
    const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int fd : kOutputs) {
        dup2(null, fd);
    }
    close(null);
}

namespace {

void ReceiveOutputs(int socket) {
    char byte = 0;
    struct iovec data {};
    data.iov_base = &byte;
    data.iov_len = 1;
    Control control{};
    struct msghdr message {};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control.bytes;
    message.msg_controllen = sizeof(control.bytes);
    if (recvmsg(socket, &message, MSG_CMSG_CLOEXEC) != 1) {
        _exit(kGateLost);
    }
    const struct cmsghdr* header = CMSG_FIRSTHDR(&message);
    if (header == nullptr || header->cmsg_len != CMSG_LEN(sizeof(kOutputs))) {
        _exit(kGateLost);
    }
    std::array<int, 2> received{};
    std::memcpy(received.data(), CMSG_DATA(header), sizeof(received));
    for (size_t i = 0; i < received.size(); ++i) {
        dup2(received[i], kOutputs[i]);
        close(received[i]);
    }
}

void Say(int socket, char byte) {
    send(socket, &byte, 1, MSG_NOSIGNAL);
}

}  // namespace

void Gate::Enter() {
    if (socket_ >= 0) {
        DropOutputs();
        Say(socket_, kGateEntered);
    }
}

void Gate::Leave() {
    if (socket_ >= 0) {
        Say(socket_, kGateLeft);
        ReceiveOutputs(socket_);
    }
}

}  // namespace cli
