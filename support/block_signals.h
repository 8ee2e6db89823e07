// SPDX-License-Identifier: MIT
#ifndef VORN_SUPPORT_BLOCK_SIGNALS_H
#define VORN_SUPPORT_BLOCK_SIGNALS_H

#include <csignal>

namespace support {

/** No handler of the program runs on this thread, nor on what it starts meanwhile. */
class BlockSignals {
public:
    BlockSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~BlockSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    BlockSignals(const BlockSignals&) = delete;
    BlockSignals& operator=(const BlockSignals&) = delete;

private:
    sigset_t before_;
};

}  // namespace support

#endif
