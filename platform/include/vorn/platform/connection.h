#ifndef VORN_PLATFORM_CONNECTION_H
#define VORN_PLATFORM_CONNECTION_H

/**
 * @file
 * Current client connections.
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
    uint32_t type; /**< kind of connection */
    char reserved2[20];
} VORN_CURCONN;

VORN_PLATFORM_ASSERT(offsetof(VORN_CURCONN, pid) == 0);
VORN_PLATFORM_ASSERT(offsetof(VORN_CURCONN, szHost) == 16);
VORN_PLATFORM_ASSERT(offsetof(VORN_CURCONN, szUser) == 24);
VORN_PLATFORM_ASSERT(offsetof(VORN_CURCONN, type) == 40);
VORN_PLATFORM_ASSERT(sizeof(VORN_CURCONN) == 64);

/**
 * Lists the current client connections.
 *
 * @param connections  receives an array in one block, texts included; the caller releases it with
 *                     free(). Stays null when there is none
 * @return the number of records, or a negative value on failure with the error code set
 */
int VORNCurConnGet(VORN_CURCONN** connections);

VORN_PLATFORM_END

#endif
