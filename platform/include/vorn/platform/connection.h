// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_CONNECTION_H
#define VORN_PLATFORM_CONNECTION_H

/**
 * @file
 * Current client connections: which process serves which client, and for which user.
 */

#include <stdint.h>

#include "vorn/platform/layout.h"

VORN_PLATFORM_BEGIN

enum {
    VORN_CURCONN_SSH = 10 /**< type of an SSH connection */
};

typedef struct VORN_CURCONN {
    uint32_t pid; /**< process that serves the connection */
    char reserved0[12];
    const char* szHost; /**< remote host; neither null nor empty */
    const char* szUser; /**< user; neither null nor empty */
    char reserved1[8];
    uint32_t type; /**< VORN_CURCONN_SSH; any other value is a connection of another kind */
    char reserved2[20];
} VORN_CURCONN;

VORN_PLATFORM_ASSERT(offsetof(VORN_CURCONN, pid) == 0);
VORN_PLATFORM_ASSERT(offsetof(VORN_CURCONN, szHost) == 16);
VORN_PLATFORM_ASSERT(offsetof(VORN_CURCONN, szUser) == 24);
VORN_PLATFORM_ASSERT(offsetof(VORN_CURCONN, type) == 40);
VORN_PLATFORM_ASSERT(sizeof(VORN_CURCONN) == 64);

/**
 * Lists the current client connections: one record for each process that serves clients, and one
 * for each process of an SSH session.
 *
 * A column that nothing tells is "unknown": the host of a process with clients of several hosts,
 * the user of one with several users, since nothing tells which of them holds its files.
 *
 * Order: callers take the last record of a process. First come the processes of SSH sessions, then
 * those of SSH servers, then all other servers; each by ascending process id. So a process that
 * serves a client itself is shown with that client, even if it was started from somebody's SSH
 * session.
 *
 * What the stand-in for Linux knows, and from where:
 *
 * - Connections: TCP over IPv4 and IPv6, established, also where the client has closed its half of
 *   the connection, with a local port that is also listened on (sock_diag over netlink, else
 *   /proc/net/tcp and /proc/net/tcp6), in the network namespace of
 *   the caller. Not seen are other namespaces, other protocols, servers inside the kernel, and a
 *   server that stops listening once it has its client; but an SSH session of a server of root's
 *   goes on being one while that is stopped, or listens elsewhere since.
 * - Processes: every process that holds the socket of a client (/proc/<pid>/fd), however many
 *   share it. With no client nothing is searched. Otherwise each process is searched at its 16
 *   lowest descriptors, and the file servers known by their executable, whatever its folder, to
 *   the end of their table: smbd, nginx, apache2, httpd, lighttpd, caddy and ganesha.nfsd, like any
 *   other that has a client among the lowest; sshd, dropbear, vsftpd, proftpd, pure-ftpd, rsync and
 *   afpd as far as their one client. Where a client is left whose socket nobody was seen to hold,
 *   the whole tables of all processes are read, once, for a server that has it further up; not for
 *   clients of the kernel's NFS server (/proc/fs/nfsd/portlist), whose sockets no process holds.
 *   What that has told is remembered for a minute: which programs have their clients further up,
 *   and which sockets have no process, like those of others in the kernel, or none that the caller
 *   may see.
 * - Host: the peer's address as a number, never a name; IPv4 dotted also on an IPv6 socket, IPv6
 *   with "%" and the interface where it is link-local (without, where it is read from /proc/net).
 * - User: the effective user of the process (/proc/<pid>/status), with the exceptions below. Ids
 *   become names by getpwuid_r; one without a name is shown as the number. It is "unknown" for
 *   ganesha.nfsd, which is root whoever its clients are.
 * - SSH (type VORN_CURCONN_SSH; sshd, sshd-session and sshd-auth by executable): the login user
 *   that the kernel keeps (/proc/<pid>/loginuid) if the connection has a kernel session
 *   (/proc/<pid>/sessionid) that its server was not itself started from, else the user of sshd's
 *   unprivileged half, else, of a login whose halves are all of one user, as root's are, that
 *   user, once a session runs. A connection not yet authenticated is left out. Every other process
 *   of the kernel session is a record too, wherever it was moved or detached to. Ports that an SSH
 *   client forwards to itself are no connections of its sshd.
 *
 *   Of dropbear, which tells the kernel of no login: the real user of the processes that it has
 *   started, once there are any; "unknown" where those have several, or run a program that may have
 *   changed it. Detached processes have no connection.
 * - SMB (smbd): the user with authenticated sessions on the connection, as /usr/bin/smbstatus
 *   tells; of several the one as whom all its open files were opened; else "unknown", as while
 *   there is none or smbstatus cannot tell. Of several channels of one user the host is the address
 *   of that at the lowest descriptor. The answer is remembered for 60 s, but for whose the
 *   open files are; smbstatus runs, once a call for either and for 2 s at most, when an smbd is not
 *   in it or has several users, and not for 10 s after it failed.
 *
 * What vanishes meanwhile is skipped. A source that cannot be had costs its own facts and one line
 * in the system log: without any list of sockets there is no record.
 *
 * Needs root, or else sees the sockets of the caller's own processes alone. Safe for use by several
 * threads.
 *
 * @param connections  receives an array in one block, texts included; the caller releases it with
 *                     free(). Null when there is none. Texts are bytes as the name service and
 *                     smbstatus give them
 * @return the number of records, or a negative value on failure with the error code set: 0x0D00
 *         without a place for the array, 0x0100 when memory runs out
 */
int VORNCurConnGet(VORN_CURCONN** connections);

VORN_PLATFORM_END

#endif
