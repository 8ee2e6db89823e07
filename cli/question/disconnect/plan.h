// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_DISCONNECT_PLAN_H
#define VORN_CLI_QUESTION_DISCONNECT_PLAN_H

/**
 * @file
 * Which connections are to be ended for files to be free, and what is left alone.
 */

#include <set>
#include <string>
#include <vector>

#include "cli/question/disconnect/host_facts.h"

namespace cli {

/** A file that a process holds. */
struct FileOfProcess {
    pid_t pid;
    std::string fullPath;
    std::string path; /**< as it is shown */
    bool deleted;
};

/** A client's connection. Its members name the processes of one look. */
struct PlannedConnection {
    std::string service;
    Client client;
    std::vector<pid_t> processes; /**< its head first */
    /** To be shut down, as servers of FTP don't heed SIGTERM; none of SSH. */
    std::set<ino_t> sockets;
    uint64_t start = 0; /**< of the head: tells it from a later process of its id */
    std::vector<FileOfProcess> selected;
    std::vector<FileOfProcess> others; /**< what it holds beside these */
};

/** Why the process that holds a file isn't ended. */
enum class Obstacle {
    kNoClient,     /**< it serves none */
    kOtherService, /**< its service can't be asked to disconnect its clients */
    kDaemon,       /**< other clients would go with it */
    kInit,         /**< it is the first process of its PID namespace */
    kOwn,          /**< it is part of the connection that this command was started over */
    kApart,        /**< its connection's end would not be its own */
    kUnknown       /**< not everything could be told that it takes */
};

struct LeftAlone {
    pid_t pid;
    std::string program;
    Obstacle obstacle;
    std::string remedy; /**< what would end it, for a shell */
    std::vector<FileOfProcess> selected;
};

struct Plan {
    std::vector<PlannedConnection> connections;
    std::vector<LeftAlone> leftAlone;
};

/**
 * @param selected  files to be free
 * @param held      all that is held, these among it or not
 */
Plan MakePlan(const HostFacts& facts, const std::vector<FileOfProcess>& selected,
              const std::vector<FileOfProcess>& held);

/** Whether two looks mean the same connection. */
bool IsSame(const PlannedConnection& a, const PlannedConnection& b);

}  // namespace cli

#endif
