// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_PROCESS_READER_H
#define VORN_CLI_QUESTION_HOLDERS_PROCESS_READER_H

/**
 * @file
 * What one process holds, from its folder in /proc.
 */

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "cli/question/holders/holdings.h"
#include "cli/question/holders/process_rows.h"
#include "support/descriptor.h"

namespace cli {

/** What all threads share while they read. */
struct ProcessReading {
    const Targets& targets;
    Wanted wanted;
    const KernelHoldings& kernel;
    /** Inode numbers of the sockets that are bound to files in a target, with these files. */
    const std::unordered_map<ino_t, UsedFile>& boundSockets;
    Decision& decision;
};

/** Reads one process's folder. */
class ProcessReader {
public:
    ProcessReader(const ProcessReading& reading, pid_t pid)
        : reading_(reading), pid_(pid), rows_(reading.targets, reading.wanted, pid) {}

    /**
     * Adds the process's rows. A process that ends meanwhile holds nothing any more.
     *
     * @param seenSockets  gets the numbers of the bound sockets that it holds
     * @return 0, or the errno value of what kept it from being examined
     */
    int Read(Holders& holders, std::unordered_set<ino_t>& seenSockets);

private:
    /** What a thread has of its own. */
    struct Task {
        std::string folder; /**< "" of the process itself, or such as "task/71/" */
        pid_t thread;
        bool files;
        bool folders;
    };

    void ReadAll();
    std::vector<Task> OtherTasks();
    void ReadTask(const Task& task);
    bool ReadLink(const std::string& name, Reason reason);
    void ReadMemory(const Task& task);
    void ReadMappings(const Task& task, const Identity& program);
    void TakeMappings(const Task& task, const Identity& program);
    void TakeMapping(const std::string& folder, const struct Mapped& mapped,
                     const Identity& program, const std::function<std::string()>& path);
    void ReadDescriptors(const std::string& folder);
    /** The same of what the kernel has told. */
    void TakeDescriptors(const Task& task);
    void TakeHeld(int folder, const std::string& taskFolder, const HeldFile& file);
    void TakeDescriptor(int folder, const std::string& taskFolder, const char* name);
    void TakeSocket(int descriptor, ino_t socket);
    void TakeRing(const std::string& taskFolder, const char* name);
    /** Whether nothing more is wanted of this process. */
    bool Enough() const { return rows_.Enough() || reading_.decision.IsMade(); }
    /** Remembers why something couldn't be read, unless the process or the thing has gone. */
    void Miss(int error);

    const ProcessReading& reading_;
    const pid_t pid_;
    ProcessRows rows_;
    support::Descriptor folder_;
    std::unordered_set<ino_t>* seenSockets_ = nullptr;
    bool memoryRead_ = false; /**< all threads have the same */
    int error_ = 0;
};

}  // namespace cli

#endif
