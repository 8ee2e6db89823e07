// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SERVICES_UNIT_SLICES_H
#define VORN_PLATFORM_LINUX_SERVICES_UNIT_SLICES_H

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vornplatform {

/**
 * Into which slices systemd is to put services, from its unit files and drop-ins: what holds at a
 * service's next start. Each is read once in the object's life.
 */
class UnitSlices {
public:
    /**
     * The slice of a service, such as "sshd.slice" of "ssh.service" (the last Slice= of the unit
     * file and its drop-ins, those of its template included); empty where none is named.
     */
    const std::string& Of(const std::string& service);

    /** Whether a slice names a service: its unit file has a name in section X-Vornalis. */
    bool NamesService(const std::string& slice);

    /** The services that have a unit file, sorted. Masked ones have none. */
    static std::vector<std::string> Installed();

private:
    std::unordered_map<std::string, std::string> slices_;
    std::unordered_map<std::string, bool> named_;
};

/** The template of an instance, "ssh@.service" of "ssh@1.service"; empty for another unit. */
std::string TemplateOf(std::string_view unit);

}  // namespace vornplatform

#endif
