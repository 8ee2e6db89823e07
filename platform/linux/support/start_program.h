#ifndef VORN_PLATFORM_LINUX_SUPPORT_START_PROGRAM_H
#define VORN_PLATFORM_LINUX_SUPPORT_START_PROGRAM_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace vornplatform {

/**
 * Starts a program as RunProgram describes. It runs under the calling thread's effective user and
 * group alone: they become its real and saved ones too, whatever those of the host program are.
 *
 * Throws std::bad_alloc when memory is short for the preparation.
 *
 * @param argv    the program's absolute path and its arguments
 * @param output  what becomes its standard output; above 2
 * @param pid     set to the program's id, to be waited for
 * @return 0 or an errno value
 */
int StartProgram(const std::vector<std::string>& argv, int output, pid_t& pid);

}  // namespace vornplatform

#endif
