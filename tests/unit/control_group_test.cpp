// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

#include "src/filehandle_internal.h"

using namespace VORN::FileHandle;

namespace {

std::optional<std::string> PathOf(const std::string& line) {
    std::string path;
    return ControlGroupLineParse(line, path) ? std::optional(path) : std::nullopt;
}

std::optional<std::string> UnitOf(const std::string& text) {
    std::string unitName;
    return ControlGroupUnitGet(text, unitName) ? std::optional(unitName) : std::nullopt;
}

}  // namespace

TEST(ControlGroup, LineIsTheOneOfTheSystemdHierarchyWithThreeFields) {
    const std::pair<const char*, std::optional<std::string>> rows[] = {
        {"9:name=systemd:/sshd.slice/sshd.service", "/sshd.slice/sshd.service"},
        {"1:name=systemd:/", "/"},
        {" \t1:name=systemd:/a.slice \r", "/a.slice"},
        {"1:name=systemd:/with blank.slice", "/with blank.slice"},
        {"1:name=systemd:", ""},
        {":name=systemd:/a", "/a"},
        {"0::/sshd.slice/sshd.service", std::nullopt},
        {"1:name=systemd:/a:b.slice", std::nullopt},
        {"1:name=systemd", std::nullopt},
        {"name=systemd:/a", std::nullopt},
        {"x:1:name=systemd:/a", std::nullopt},
        {"1:Name=systemd:/a", std::nullopt},
        {"1:name=systemd :/a", std::nullopt},
        {"1: name=systemd:/a", std::nullopt},
        {"1:name=systemd2:/a", std::nullopt},
        {"1:xname=systemd:/a", std::nullopt},
        {"2:cpu,cpuacct:/name=systemd", std::nullopt},
        {"2:cpu:name=systemd", std::nullopt},
        {"", std::nullopt},
        {"  ", std::nullopt},
    };
    for (const auto& [line, path] : rows) {
        EXPECT_EQ(PathOf(line), path) << line;
    }
}

TEST(ControlGroup, UnitIsTheFirstDirectoryOfTheFirstSystemdLine) {
    const std::pair<std::string, std::optional<std::string>> rows[] = {
        {"1:name=systemd:/sshd.slice/sshd.service\n", "sshd.slice"},
        {"1:name=systemd:/user.slice/user-1000.slice/user-1000-2.scope\n", "user.slice"},
        {"2:cpu:/x\n\n1:name=systemd:/a.slice\n1:name=systemd:/b.slice\n", "a.slice"},
        {"1:name=systemd:/a:b\n1:name=systemd:/b.slice", "b.slice"},
        {"1:name=systemd:/last.slice", "last.slice"},
        {"1:name=systemd:/../../etc\n", ".."},
        {"1:name=systemd:/./x\n", "."},
        {"1:name=systemd:/\n", ""},
        {"1:name=systemd://a.slice\n", ""},
        {"1:name=systemd:a/b.slice\n", "b.slice"},
        {"1:name=systemd:a.slice\n1:name=systemd:/b.slice\n", std::nullopt},
        {"1:name=systemd:\n", std::nullopt},
        {"0::/sshd.slice\n", std::nullopt},
        {"\n\n", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [text, unitName] : rows) {
        EXPECT_EQ(UnitOf(text), unitName) << text;
    }
}
