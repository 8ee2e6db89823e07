// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_UNIT_SUPPORT_SERVICE_TEST_H
#define VORN_TESTS_UNIT_SUPPORT_SERVICE_TEST_H

#include <string>
#include <vector>

#include "tests/unit/support/library_test.h"

namespace unit {

inline constexpr char kServiceSource[] = "filehandle_get_service_name";
inline constexpr char kLocalUnits[] = "/usr/local/lib/systemd/system/";
inline constexpr char kVendorUnits[] = "/usr/lib/systemd/system/";

/** A host with unit files. */
class ServiceTest : public LibraryTest {
protected:
    void SetName(const std::string& path, const std::string& name) {
        libc.unitFiles.insert(path);
        platform.sectionValues[{path, "X-Vornalis", "Name"}] = name;
    }
    void SetReference(const std::string& path, const std::string& reference) {
        libc.unitFiles.insert(path);
        platform.sectionValues[{path, "X-Vornalis", "NameI18n"}] = reference;
    }
    /** A vendor unit with both names, the localised one in the bundle "texts". */
    void AddUnit(const std::string& unit, const std::string& name, const std::string& localised) {
        SetName(kVendorUnits + unit, name);
        SetReference(kVendorUnits + unit, "texts:" + unit);
        platform.bundles["texts"][unit] = localised;
    }
    ::testing::AssertionResult NoUnitFileReported() { return ErrorSet(0x0700, kServiceSource, 98); }
    /** The look-ups of one unit file that is nowhere. */
    static std::vector<std::string> BothPlaces(const std::string& file) {
        return {"access(" + std::string(kLocalUnits) + file + ", 0)",
                "access(" + std::string(kVendorUnits) + file + ", 0)"};
    }
};

}  // namespace unit

#endif
