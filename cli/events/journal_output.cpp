// SPDX-License-Identifier: MIT
#include "cli/events/journal_output.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "cli/process/output.h"
#include "support/write_all.h"

namespace cli {
namespace {

using std::chrono::milliseconds;

/** A full queue is nothing to be told of until it has been full for so long. */
constexpr milliseconds kBusy(2000);
/** A journald that isn't there is looked for again after so long. */
constexpr milliseconds kAway(200);

/** What an entry that is too large for a datagram travels in; sealed, as journald wants it. */
support::Descriptor SealedFile(std::string_view entry) {
    support::Descriptor file(memfd_create("vorn-openfiles-event", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
    if (file &&
        (!support::WriteAll(file.Get(), entry) || fcntl(file.Get(), F_ADD_SEALS, kSeals) != 0)) {
        file.Reset();
    }
    return file;
}

}  // namespace

std::string_view JournalOutput::Entry(size_t number) const {
    const size_t begin = number == 0 ? 0 : ends_[number - 1];
    return std::string_view(text_).substr(begin, ends_[number] - begin);
}

/** @return 0, or an errno value */
int JournalOutput::Connect() {
    struct sockaddr_un address {};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, sizeof(address.sun_path) - 1);
    support::Descriptor made(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!made || connect(made.Get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
        return errno;
    }
    // Room for what the queue takes, which is counted in datagrams.
    constexpr int kRoom = 8 << 20;
    setsockopt(made.Get(), SOL_SOCKET, SO_SNDBUF, &kRoom, sizeof(kRoom));
    socket_ = std::move(made);
    return 0;
}

/** @return 0, or an errno value */
int JournalOutput::SendAsFile(std::string_view entry) const {
    const support::Descriptor file = SealedFile(entry);
    if (!file) {
        return errno;
    }
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    struct msghdr message {};
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    struct cmsghdr* const head = CMSG_FIRSTHDR(&message);
    head->cmsg_level = SOL_SOCKET;
    head->cmsg_type = SCM_RIGHTS;
    head->cmsg_len = CMSG_LEN(sizeof(int));
    const int fd = file.Get();
    std::memcpy(CMSG_DATA(head), &fd, sizeof(fd));
    return sendmsg(socket_.Get(), &message, MSG_NOSIGNAL) < 0 ? errno : 0;
}

/** @return 0 when one or more were taken, otherwise an errno value */
int JournalOutput::SendSome() {
    constexpr size_t kMost = 64;
    std::array<mmsghdr, kMost> messages{};
    std::array<iovec, kMost> parts{};
    const size_t count = std::min(kMost, ends_.size() - sent_);
    for (size_t i = 0; i < count; ++i) {
        const std::string_view entry = Entry(sent_ + i);
        parts[i] = {const_cast<char*>(entry.data()), entry.size()};
        messages[i].msg_hdr.msg_iov = &parts[i];
        messages[i].msg_hdr.msg_iovlen = 1;
    }
    int sent = sendmmsg(socket_.Get(), messages.data(), static_cast<unsigned>(count), MSG_NOSIGNAL);
    if (sent < 0 && (errno == EMSGSIZE || errno == ENOBUFS)) {
        if (const int error = SendAsFile(Entry(sent_)); error != 0) {
            return error;
        }
        sent = 1;
    }
    if (sent < 0) {
        return errno;
    }
    sent_ += static_cast<size_t>(sent);
    return 0;
}

/** @return 0, or why nothing was taken, as an errno value */
int JournalOutput::Send() {
    if (!socket_) {
        if (const int error = Connect(); error != 0) {
            return error;
        }
    }
    const int error = SendSome();
    if (error != 0 && error != EAGAIN && error != EINTR) {
        // Another journald has another socket of the same name.
        socket_.Reset();
    }
    return error;
}

void JournalOutput::TellTrouble(int error) {
    if (!refusedSince_) {
        refusedSince_ = Clock::now();
    }
    if (error == EAGAIN) {
        if (Clock::now() - *refusedSince_ < kBusy) {
            return;
        }
        // It may be one that nobody listens at any more, while its place is another's.
        socket_.Reset();
    }
    if (told_) {
        return;
    }
    told_ = true;
    Complain(
        fmt::format("the journal takes no events ({}: {}); they wait, and what there is no "
                    "room for is told as lost",
                    path_, error == EAGAIN ? "its queue is full" : std::strerror(error)));
}

void JournalOutput::TellEnd() {
    if (told_) {
        Complain("the journal takes events again");
    }
    told_ = false;
    refusedSince_.reset();
}

/** Until it may take some; false when there is a signal, or nothing has changed. */
bool JournalOutput::Wait(int error, int signals, milliseconds patience) {
    struct pollfd watched[] = {{signals, POLLIN, 0},
                               {error == EAGAIN ? socket_.Get() : -1, POLLOUT, 0}};
    poll(watched, 2, static_cast<int>(patience.count()));
    return watched[0].revents == 0;
}

bool JournalOutput::Flush() {
    while (!IsDone()) {
        const int error = Send();
        if (error == 0) {
            TellEnd();
            continue;
        }
        TellTrouble(error);
        if (!Wait(error, signals_, socket_ ? kBusy : kAway)) {
            return false;
        }
    }
    text_.clear();
    ends_.clear();
    sent_ = 0;
    return true;
}

bool JournalOutput::FlushLast() {
    constexpr milliseconds kPatience(1000);
    Clock::time_point last = Clock::now();
    while (!IsDone()) {
        const int error = Send();
        if (error == 0) {
            last = Clock::now();
        } else if (Clock::now() - last >= kPatience) {
            Complain(fmt::format("{} events have not reached the journal ({}: {})",
                                 ends_.size() - sent_, path_, std::strerror(error)));
            return false;
        } else {
            Wait(error, -1, kAway);
        }
    }
    return true;
}

}  // namespace cli
