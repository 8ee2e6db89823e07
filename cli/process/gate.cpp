#include "cli/process/gate.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "cli/process/gate_protocol.h"

namespace cli {
namespace {

constexpr std::array<int, 2> kOutputs = {STDOUT_FILENO, STDERR_FILENO};

/** A byte with room for two descriptors beside it. */
struct Message {
    Message() {
        data.iov_base = &byte;
        data.iov_len = 1;
        header.msg_iov = &data;
        header.msg_iovlen = 1;
        header.msg_control = control;
        header.msg_controllen = sizeof(control);
    }
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;

    char byte = 0;
    struct iovec data {};
    alignas(struct cmsghdr) char control[CMSG_SPACE(sizeof(kOutputs))] = {};
    struct msghdr header {};
};

}  // namespace

void SendOutputs(int socket) {
    Message message;
    message.byte = kGateOpened;
    struct cmsghdr* attached = CMSG_FIRSTHDR(&message.header);
    attached->cmsg_level = SOL_SOCKET;
    attached->cmsg_type = SCM_RIGHTS;
    attached->cmsg_len = CMSG_LEN(sizeof(kOutputs));
    std::memcpy(CMSG_DATA(attached), kOutputs.data(), sizeof(kOutputs));
    sendmsg(socket, &message.header, MSG_NOSIGNAL);
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
    Message message;
    if (recvmsg(socket, &message.header, MSG_CMSG_CLOEXEC) != 1) {
        _exit(kGateLost);
    }
    const struct cmsghdr* attached = CMSG_FIRSTHDR(&message.header);
    if (attached == nullptr || attached->cmsg_len != CMSG_LEN(sizeof(kOutputs))) {
        _exit(kGateLost);
    }
    std::array<int, 2> received{};
    std::memcpy(received.data(), CMSG_DATA(attached), sizeof(received));
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
