// SPDX-License-Identifier: MIT
#include "cli/process/supervision/gate.h"

#include <sys/socket.h>
#include <unistd.h>

#include "cli/process/standard_descriptors.h"
#include "cli/process/supervision/gate_protocol.h"
#include "cli/process/supervision/pass_descriptors.h"

namespace cli {

void Gate::Say(char byte) const {
    if (socket_ >= 0 && send(socket_, &byte, 1, MSG_NOSIGNAL) != 1) {
        _exit(kGateLost);
    }
}

void Gate::Enter() {
    if (socket_ >= 0) {
        DropStandardDescriptors({STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO});
        Say(kGateEntered);
    }
}

void Gate::Leave() {
    Say(kGateLeft);
    if (socket_ >= 0 && !ReceiveStandardDescriptors(socket_)) {
        _exit(kGateLost);
    }
}

void Gate::TellFound() {
    if (!toldFound_) {
        Say(kGateFound);
        toldFound_ = true;
    }
}

namespace {

void Await(int socket, char wanted) {
    char byte = 0;
    if (socket >= 0 && (recv(socket, &byte, 1, 0) != 1 || byte != wanted)) {
        _exit(kGateLost);
    }
}

}  // namespace

Gate::Screen::Screen(Gate& gate) : gate_(gate) {
    gate_.Say(kScreenWanted);
    Await(gate_.socket_, kScreenSet);
}

Gate::Screen::~Screen() {
    gate_.Say(kScreenDone);
    Await(gate_.socket_, kScreenSet);
}

}  // namespace cli
