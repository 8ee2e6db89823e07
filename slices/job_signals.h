// SPDX-License-Identifier: MIT
#ifndef VORN_SLICES_JOB_SIGNALS_H
#define VORN_SLICES_JOB_SIGNALS_H

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <functional>

#include "slices/trouble.h"
#include "support/owner.h"

namespace slices {

/**
 * Listens to systemd for jobs that are done and for units that were read anew.
 *
 * A process that systemd starts right into a group which has others already, such as that of an
 * ExecStartPost=, changes nothing that could be watched. Its job tells.
 */
class JobSignals {
public:
    JobSignals(sd_event* loop, Troubles& troubles, std::function<void()> tell)
        : loop_(loop), troubles_(troubles), tell_(std::move(tell)) {}

    /** Does nothing where it listens already. Never waits. */
    void Listen();

private:
    int Connect();
    void Lose(int error);
    static int OnSignal(sd_bus_message* message, void* self, sd_bus_error* error);
    static int OnEnd(sd_bus_message* message, void* self, sd_bus_error* error);
    static int OnAnswer(sd_bus_message* message, void* self, sd_bus_error* error);

    sd_event* loop_;
    Troubles& troubles_;
    std::function<void()> tell_;
    support::Owner<sd_bus, sd_bus_close_unref> bus_;
};

}  // namespace slices

#endif
