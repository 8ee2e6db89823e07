// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SOCKETS_SERVER_KIND_H
#define VORN_PLATFORM_LINUX_SOCKETS_SERVER_KIND_H

#include <string_view>

namespace vornplatform {

/** How a server spreads its clients over processes, and where its users are known. */
enum class ServerKind {
    kOther,       /**< not known by its executable */
    kSsh,         /**< one client a process; users from login sessions */
    kDropbear,    /**< one client a process; users from the processes that it starts */
    kSmb,         /**< one machine a process, over several channels; users from smbstatus */
    kOneClient,   /**< a file server that serves one client a process */
    kManyClients, /**< a file server that serves many clients in one process */
    kManyUsers    /**< the same, as one user whoever its clients are */
};

/** @param program  file name of the executable */
ServerKind KindOfServer(std::string_view program);

/** Whether the executable is that of a file server. */
bool IsFileServer(ServerKind kind);

/** Whether a process of this kind has one client; further sockets it holds are not its client's. */
bool ServesOneClient(ServerKind kind);

}  // namespace vornplatform

#endif
