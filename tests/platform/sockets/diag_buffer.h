// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_PLATFORM_SOCKETS_DIAG_BUFFER_H
#define VORN_TESTS_PLATFORM_SOCKETS_DIAG_BUFFER_H

#include <linux/inet_diag.h>
#include <linux/netlink.h>

#include <cstring>
#include <vector>

/** Netlink messages one behind the other, as the kernel sends them. */
class DiagBuffer {
public:
    template <typename Payload>
    DiagBuffer& Put(std::uint16_t type, const Payload& payload, std::uint16_t flags = 0) {
        nlmsghdr header{};
        header.nlmsg_len = NLMSG_LENGTH(sizeof(payload));
        header.nlmsg_type = type;
        header.nlmsg_flags = flags;
        const std::size_t at = bytes_.size();
        bytes_.resize(at + NLMSG_SPACE(sizeof(payload)));
        std::memcpy(bytes_.data() + at, &header, sizeof(header));
        std::memcpy(bytes_.data() + at + NLMSG_HDRLEN, &payload, sizeof(payload));
        return *this;
    }

    /** Makes the first message claim another length. */
    DiagBuffer& Claim(std::uint32_t length) {
        std::memcpy(bytes_.data(), &length, sizeof(length));
        return *this;
    }

    DiagBuffer& Cut(std::size_t size) {
        bytes_.resize(size);
        bytes_.shrink_to_fit();
        return *this;
    }

    const void* Data() const { return bytes_.data(); }
    std::size_t Size() const { return bytes_.size(); }

private:
    std::vector<char> bytes_;
};

#endif
