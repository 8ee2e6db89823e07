// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_UNIT_SUPPORT_SCRIPTED_SETTERS_H
#define VORN_TESTS_UNIT_SUPPORT_SCRIPTED_SETTERS_H

#include <map>
#include <string>

namespace unit {

/**
 * Makes record setters refuse texts that they would take: the real setter is then given an empty
 * text instead, and so logs, sets 0x0D00 and returns -1 as in earnest.
 *
 * Setters: setPid, setFullPath, setPath, setServiceName, setHost, setUser, setFilename, setTime.
 */
struct ScriptedSetters {
    /** Refuses the call of that number, 1 being the next. */
    void Refuse(const std::string& setter, int call) { callsLeft[setter] = call; }

    std::map<std::string, int> callsLeft;
};

ScriptedSetters& TheSetters();

}  // namespace unit

#endif
