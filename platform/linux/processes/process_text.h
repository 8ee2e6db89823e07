#ifndef VORN_PLATFORM_LINUX_PROCESSES_PROCESS_TEXT_H
#define VORN_PLATFORM_LINUX_PROCESSES_PROCESS_TEXT_H

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace vornplatform {

/** What /proc/<pid>/stat says of a process. */
struct ProcessStat {
    pid_t parent = 0;
    std::uint64_t startTime = 0; /**< in clock ticks since boot: tells processes of one pid apart */
};

/**
 * Reads the text of /proc/<pid>/stat. The name of the process stands in brackets and may itself
 * hold brackets, blanks and newlines; the fields begin after the last closing bracket.
 */
std::optional<ProcessStat> ParseProcessStat(std::string_view text);

/** The users that a process runs as. */
struct ProcessUsers {
    uid_t real = 0;
    uid_t effective = 0;
};

/** Reads the user ids from the text of /proc/<pid>/status. */
std::optional<ProcessUsers> ParseProcessUsers(std::string_view text);

/**
 * Reads the text of /proc/<pid>/loginuid or /proc/<pid>/sessionid.
 *
 * @return nothing also for 4294967295, by which the kernel says that none is set
 */
std::optional<std::uint32_t> ParseAuditId(std::string_view text);

/**
 * Reads the text of /proc/<pid>/task/<tid>/children, each pid with a blank behind it; one that the
 * end of the text cuts off is left out.
 */
std::vector<pid_t> ParseChildren(std::string_view text);

/** Reads the inode number from a descriptor's link, such as "socket:[29024]". */
std::optional<std::uint64_t> ParseSocketLink(std::string_view link);

/**
 * The file name of an executable from its link, such as "sshd" from "/usr/sbin/sshd". A program
 * that was replaced while it runs keeps its name: " (deleted)" at the end is dropped.
 */
std::string_view ExecutableName(std::string_view link);

}  // namespace vornplatform

#endif
