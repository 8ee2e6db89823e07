// SPDX-License-Identifier: MIT
#include "cli/process/supervision/pass_descriptors.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "cli/process/supervision/gate_protocol.h"
#include "support/descriptor.h"

namespace cli {
namespace {

constexpr std::array<int, 3> kPassed = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};

/** A byte with room for the descriptors beside it. */
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
    alignas(struct cmsghdr) char control[CMSG_SPACE(sizeof(kPassed))] = {};
    struct msghdr header {};
};

}  // namespace

bool SendStandardDescriptors(int socket) {
    Message message;
    message.byte = kGateOpened;
    struct cmsghdr* attached = CMSG_FIRSTHDR(&message.header);
    attached->cmsg_level = SOL_SOCKET;
    attached->cmsg_type = SCM_RIGHTS;
    attached->cmsg_len = CMSG_LEN(sizeof(kPassed));
    std::memcpy(CMSG_DATA(attached), kPassed.data(), sizeof(kPassed));
    return sendmsg(socket, &message.header, MSG_NOSIGNAL) == 1;
}

bool ReceiveStandardDescriptors(int socket) {
    Message message;
    if (recvmsg(socket, &message.header, MSG_CMSG_CLOEXEC) != 1 || message.byte != kGateOpened) {
        return false;
    }
    const struct cmsghdr* attached = CMSG_FIRSTHDR(&message.header);
    if (attached == nullptr || attached->cmsg_len != CMSG_LEN(sizeof(kPassed))) {
        return false;
    }
    std::array<int, kPassed.size()> received{};
    std::memcpy(received.data(), CMSG_DATA(attached), sizeof(received));
    bool placed = true;
    for (size_t i = 0; i < received.size(); ++i) {
        const support::Descriptor owner(received[i]);
        placed = dup2(owner.Get(), kPassed[i]) >= 0 && placed;
    }
    return placed;
}

}  // namespace cli
