// SPDX-License-Identifier: MIT
#include "slices/job_signals.h"

#include <cstring>
#include <string>

namespace slices {
namespace {

constexpr char kManager[] = "org.freedesktop.systemd1";
constexpr char kObject[] = "/org/freedesktop/systemd1";
constexpr char kInterface[] = "org.freedesktop.systemd1.Manager";
constexpr char kLocalObject[] = "/org/freedesktop/DBus/Local";
constexpr char kLocalInterface[] = "org.freedesktop.DBus.Local";

}  // namespace

void JobSignals::Listen() {
    if (bus_) {
        return;
    }
    const int error = Connect();
    if (error < 0) {
        Lose(error);
    }
}

int JobSignals::Connect() {
    sd_bus* opened = nullptr;
    int error = sd_bus_open_system(&opened);
    if (error < 0) {
        return error;
    }
    bus_.reset(opened);
    error = sd_bus_attach_event(opened, loop_, SD_EVENT_PRIORITY_NORMAL);
    for (const char* signal : {"JobRemoved", "Reloading"}) {
        error = error < 0 ? error
                          : sd_bus_match_signal_async(opened, nullptr, kManager, kObject,
                                                      kInterface, signal, OnSignal, OnAnswer, this);
    }
    error = error < 0
                ? error
                : sd_bus_match_signal_async(opened, nullptr, nullptr, kLocalObject, kLocalInterface,
                                            "Disconnected", OnEnd, nullptr, this);
    return error < 0 ? error
                     : sd_bus_call_method_async(opened, nullptr, kManager, kObject, kInterface,
                                                "Subscribe", OnAnswer, this, nullptr);
}

void JobSignals::Lose(int error) {
    bus_.reset();
    troubles_.Report("bus", std::string("can't listen to systemd: ") + std::strerror(-error));
}

int JobSignals::OnSignal(sd_bus_message*, void* self, sd_bus_error*) {
    static_cast<JobSignals*>(self)->tell_();
    return 0;
}

int JobSignals::OnEnd(sd_bus_message*, void* self, sd_bus_error*) {
    static_cast<JobSignals*>(self)->Lose(-ECONNRESET);
    return 0;
}

int JobSignals::OnAnswer(sd_bus_message* message, void* self, sd_bus_error*) {
    auto& signals = *static_cast<JobSignals*>(self);
    const sd_bus_error* refusal = sd_bus_message_get_error(message);
    if (refusal == nullptr) {
        signals.troubles_.Over("bus");
    } else {
        signals.troubles_.Report("bus",
                                 std::string("can't listen to systemd: ") + refusal->message);
    }
    return 0;
}

}  // namespace slices
