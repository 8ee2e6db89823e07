#ifndef VORN_CLI_PROCESS_SIGNALS_H
#define VORN_CLI_PROCESS_SIGNALS_H

#include <initializer_list>

namespace cli {

/** Signals that are read from a descriptor instead of ending or interrupting the program. */
class Signals {
public:
    /** From now on these are blocked. */
    Signals(std::initializer_list<int> numbers);
    ~Signals();
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

    /** Readable while there is a next one. */
    int Fd() const { return fd_; }
    /** The next one; 0 when there is none. */
    int Next() const;

private:
    int fd_;
};

}  // namespace cli

#endif
