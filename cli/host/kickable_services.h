// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_KICKABLE_SERVICES_H
#define VORN_CLI_HOST_KICKABLE_SERVICES_H

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace cli {

/** A service that can be asked to disconnect its clients. */
struct KickableService {
    std::string name; /**< as it is shown */
    std::string unit;

    /** Nothing where the platform can't tell. */
    struct State {
        bool installed;
        bool running;
        bool elsewhere; /**< a daemon of it runs outside of its unit */
    };
    std::optional<State> state;
};

/** Those of gszKickableServiceTable that have a name. */
std::vector<KickableService> KickableServices();

/** Their names by unit, without a look at their states. */
std::map<std::string, std::string> KickableUnits();

/** "running", "not installed" and the like; empty for a state that can't be told. */
std::string StateText(const KickableService& service);

}  // namespace cli

#endif
