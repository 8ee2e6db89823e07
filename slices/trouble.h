// SPDX-License-Identifier: MIT
#ifndef VORN_SLICES_TROUBLE_H
#define VORN_SLICES_TROUBLE_H

#include <set>
#include <string>
#include <string_view>

namespace slices {

/** Says each trouble once, and again when it comes back after it was over. */
class Troubles {
public:
    /** @param kind  one of a few words, by which it is known again */
    void Report(std::string_view kind, std::string_view text);
    void Over(std::string_view kind);

private:
    std::set<std::string, std::less<>> kinds_;
};

/** Writes a line for the journal, as an error. */
void LogError(std::string_view text);

}  // namespace slices

#endif
