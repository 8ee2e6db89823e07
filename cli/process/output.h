// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_PROCESS_OUTPUT_H
#define VORN_CLI_PROCESS_OUTPUT_H

#include <string>
#include <string_view>

namespace cli {

/**
 * Text on its way to a file descriptor.
 *
 * A reader that has gone away has had what it wanted: from then on nothing is written and
 * IsClosed() says so. Every other failure to write throws Failure.
 */
class Output {
public:
    /** Instead of a descriptor: the text is only collected. */
    static constexpr int kNowhere = -1;

    /** The descriptor stays the caller's. SIGPIPE must be ignored. */
    explicit Output(int fd) : fd_(fd) {}
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /** Where to append to. */
    std::string& Text() { return text_; }
    /** After each record: writes once enough has been collected. */
    void EndRecord() {
        if (text_.size() >= kEnough && fd_ != kNowhere) {
            Flush();
        }
    }
    void Flush();
    bool IsClosed() const { return closed_; }

private:
    static constexpr size_t kEnough = 256 * 1024;

    int fd_;
    bool closed_ = false;
    std::string text_;
};

/**
 * One line on standard error, with the program's name. Where that can't be written nobody can be
 * told, and the exit status alone has to say it.
 */
void Complain(std::string_view text) noexcept;

}  // namespace cli

#endif
