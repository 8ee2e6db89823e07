#ifndef VORN_CLI_HOST_HOST_FILE_H
#define VORN_CLI_HOST_HOST_FILE_H

#include <string>

namespace cli {

/** A small file of the host, such as those of /proc/self; empty where it can't be read. */
std::string ReadHostFile(const char* path);

}  // namespace cli

#endif
