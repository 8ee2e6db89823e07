// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_PLATFORM_SUPPORT_PRIVATE_NETWORK_H
#define VORN_TESTS_PLATFORM_SUPPORT_PRIVATE_NETWORK_H

#include <sys/types.h>

#include <cstdint>
#include <functional>

#include "support/descriptor.h"

/**
 * Runs a body in a child process with a network of its own, in which nothing but the loopback
 * interface exists. Failures of the body fail the calling test; where this user may not make such
 * a network, the calling test is skipped.
 */
void InPrivateNetwork(const std::function<void()>& body);

/** A socket that listens on a free port. */
class Listener {
public:
    explicit Listener(const char* address);

    int Get() const { return socket_.Get(); }
    std::uint16_t Port() const { return port_; }
    void Close() { socket_.Reset(); }

private:
    support::Descriptor socket_;
    std::uint16_t port_ = 0;
};

/** Both ends of a connection to a listener. */
class ServedClient {
public:
    /** @param address  that the client calls from */
    ServedClient(const Listener& listener, const char* address);

    support::Descriptor& Client() { return client_; }
    support::Descriptor& Server() { return server_; }

private:
    support::Descriptor client_;
    support::Descriptor server_;
};

#endif
