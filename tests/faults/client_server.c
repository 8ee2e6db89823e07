// SPDX-License-Identifier: MIT
/*
 * A server with a client of its own: says "ready" and stays. What it counts as is the name of its
 * executable.
 */
#include <arpa/inet.h>
#include <stdio.h>
#include <sys/socket.h>
#include <unistd.h>

int main(void) {
    struct sockaddr_in address = {.sin_family = AF_INET};
    socklen_t size = sizeof(address);
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    const int client = socket(AF_INET, SOCK_STREAM, 0);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(listener, (struct sockaddr*)&address, size) != 0 || listen(listener, 1) != 0 ||
        getsockname(listener, (struct sockaddr*)&address, &size) != 0 ||
        connect(client, (struct sockaddr*)&address, size) != 0 || accept(listener, NULL, NULL) < 0)
        return 1;
    puts("ready");
    fflush(stdout);
    for (;;)
        pause();
}
