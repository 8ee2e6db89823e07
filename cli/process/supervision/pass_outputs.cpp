// SPDX-License-Identifier: MIT
#include "cli/process/supervision/pass_outputs.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "cli/process/supervision/gate_protocol.h"
#include "support/descriptor.h"

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

bool SendOutputs(int socket) {
    Message message;
    message.byte = kGateOpened;
    struct cmsghdr* attached = CMSG_FIRSTHDR(&message.header);
    attached->cmsg_level = SOL_SOCKET;
    attached->cmsg_type = SCM_RIGHTS;
    attached->cmsg_len = CMSG_LEN(sizeof(kOutputs));
    std::memcpy(CMSG_DATA(attached), kOutputs.data(), sizeof(kOutputs));
    return sendmsg(socket, &message.header, MSG_NOSIGNAL) == 1;
}

bool ReceiveOutputs(int socket) {
    Message message;
    if (recvmsg(socket, &message.header, MSG_CMSG_CLOEXEC) != 1 || message.byte != kGateOpened) {
        return false;
    }
    const struct cmsghdr* attached = CMSG_FIRSTHDR(&message.header);
    if (attached == nullptr || attached->cmsg_len != CMSG_LEN(sizeof(kOutputs))) {
        return false;
    }
    std::array<int, 2> received{};
    std::memcpy(received.data(), CMSG_DATA(attached), sizeof(received));
    bool placed = true;
    for (size_t i = 0; i < received.size(); ++i) {
        const support::Descriptor owner(received[i]);
        placed = dup2(owner.Get(), kOutputs[i]) >= 0 && placed;
    }
    return placed;
}

}  // namespace cli
