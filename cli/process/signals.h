// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_PROCESS_SIGNALS_H
#define VORN_CLI_PROCESS_SIGNALS_H

#include <csignal>
#include <initializer_list>

#include "support/descriptor.h"

namespace cli {

/** Signals that are read from a descriptor instead of ending or interrupting the program. */
class Signals {
public:
    /** From now on these are blocked. Throws Failure. */
    Signals(std::initializer_list<int> numbers);
    /** They are as before. */
    ~Signals();
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

    /** Readable while there is a next one. */
    int Fd() const { return fd_.Get(); }
    /** The next one; 0 when there is none. */
    int Next() const;

private:
    sigset_t before_;
    support::Descriptor fd_;
};

}  // namespace cli

#endif
