// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_UNIT_SUPPORT_JOURNAL_H
#define VORN_TESTS_UNIT_SUPPORT_JOURNAL_H

#include <cerrno>
#include <functional>
#include <initializer_list>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/unit/support/failing_new.h"

namespace unit {

/**
 * What the library called, in order, each call as the text a C programmer would write:
 * `KLIBCFileEnumDir(/proc, null, list 2, 0x40)`. Texts stand without quotes.
 */
class Journal {
public:
    /** Leaves errno alone. */
    void Add(const std::string& call);
    void Clear() { calls_.clear(); }

    const std::vector<std::string>& Calls() const { return calls_; }
    /** The calls of one function. */
    std::vector<std::string> CallsOf(const std::string& function) const;
    /** The calls of several functions, in their order. */
    std::vector<std::string> CallsOf(std::initializer_list<const char*> functions) const;

    /** Called with each call as it is made, before it does anything. */
    std::function<void(const std::string& call)> onCall;

private:
    std::vector<std::string> calls_;
};

Journal& TheJournal();

inline std::string Shown(const char* text) {
    return text == nullptr ? "null" : text;
}
inline std::string Shown(const std::string& text) {
    return text;
}
template <typename Number, typename = std::enable_if_t<std::is_arithmetic_v<Number>>>
std::string Shown(Number number) {
    return std::to_string(number);
}
std::string Hex(int number);

/** Adds `function(arguments)` to the journal. */
template <typename... Arguments>
void Note(const char* function, const Arguments&... arguments) {
    const FailingNewPause pause;
    const int savedErrno = errno;
    std::ostringstream call;
    [[maybe_unused]] const char* separator = "";
    call << function << "(";
    ((call << separator << Shown(arguments), separator = ", "), ...);
    call << ")";
    TheJournal().Add(call.str());
    errno = savedErrno;
}

}  // namespace unit

#endif
