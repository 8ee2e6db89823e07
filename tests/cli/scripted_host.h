// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_CLI_SCRIPTED_HOST_H
#define VORN_TESTS_CLI_SCRIPTED_HOST_H

#include <map>
#include <set>
#include <string>
#include <vector>

/**
 * What the platform answers in a test program that links the scripted platform: operations in a
 * library of their own, between the command's and the real ones.
 */
struct ScriptedHost {
    struct Connection {
        unsigned pid;
        std::string host;
        std::string user;
        unsigned type;
    };

    std::vector<std::string> shares; /**< by their paths, which are their names too */
    std::vector<std::string> hidden;
    std::vector<Connection> connections;
    std::map<int, int> parents;
    std::set<std::string> folders;
    std::map<std::string, std::string> units; /**< of processes, by pid; their display names */
    std::set<std::string> failing;            /**< operations */
    std::map<std::string, int> calls;         /**< of operations that count theirs */
};

/** The one of this process. Only KLIBCFileCheckDir is called by several threads. */
extern ScriptedHost scriptedHost;

#endif
