// SPDX-License-Identifier: MIT
#include "tests/unit/support/journal.h"

#include <algorithm>
#include <cstdio>

namespace unit {

Journal& TheJournal() {
    static Journal& journal = *new Journal;  // outlives every static object
    return journal;
}

void Journal::Add(const std::string& call) {
    calls_.push_back(call);
    if (onCall) {
        onCall(call);
    }
}

std::vector<std::string> Journal::CallsOf(const std::string& function) const {
    return CallsOf({function.c_str()});
}

std::vector<std::string> Journal::CallsOf(std::initializer_list<const char*> functions) const {
    std::vector<std::string> found;
    for (const std::string& call : calls_) {
        const std::string name = call.substr(0, call.find('('));
        if (std::find(functions.begin(), functions.end(), name) != functions.end()) {
            found.push_back(call);
        }
    }
    return found;
}

std::string Hex(int number) {
    char text[16];
    std::snprintf(text, sizeof(text), "0x%X", static_cast<unsigned>(number));
    return text;
}

}  // namespace unit
