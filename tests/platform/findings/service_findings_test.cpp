// SPDX-License-Identifier: MIT
#include "platform/linux/findings/service_findings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include "tests/platform/support/private_root.h"
#include "vorn/platform/service.h"

namespace {

using namespace vornplatform;
using testing::HasSubstr;
using testing::Not;

constexpr char kUnits[] = "/usr/lib/systemd/system/";

/** Units of a host with Samba and SSH; /usr is the real one, so the folder gets a file system. */
void WriteUnits() {
    ASSERT_EQ(mount("tmpfs", "/usr/lib/systemd", "tmpfs", 0, ""), 0);
    const std::string units = kUnits;
    WriteFile(units + "SMBService.slice", "[X-Vornalis]\nName=SMB\n");
    WriteFile(units + "sshd.slice", "[X-Vornalis]\nNameI18n=service:ssh\n");
    WriteFile(units + "plain.slice", "[Slice]\n");
    WriteFile(units + "smbd.service", "[Service]\nType=notify\n");
    WriteFile(units + "smbd.service.d/50-vorn-slice.conf", "[Service]\nSlice=SMBService.slice\n");
    WriteFile(units + "ssh@.service.d/50-vorn-slice.conf", "[Service]\nSlice=sshd.slice\n");
    WriteFile(units + "other.service", "[Service]\nSlice=plain.slice\n");
}

GroupedProcess InV2(pid_t pid, const std::string& path) {
    return {pid, {std::nullopt, path}};
}

GroupedProcess InBoth(pid_t pid, const std::string& unified, const std::string& named) {
    return {pid, {named, unified}};
}

TEST(UnitSlice, IsTheLastOneThatItsFilesName) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        WriteUnits();
        UnitSlices before;
        EXPECT_EQ(before.Of("smbd.service"), "SMBService.slice");
        EXPECT_EQ(before.Of("ssh@1-2.service"), "sshd.slice");
        EXPECT_EQ(before.Of("nobody.service"), "");
        EXPECT_TRUE(before.NamesService("SMBService.slice") && before.NamesService("sshd.slice"));
        EXPECT_FALSE(before.NamesService("plain.slice") || before.NamesService("none.slice"));
        WriteFile("/etc/systemd/system/smbd.service.d/60-own.conf", "[Service]\nSlice=my.slice\n");
        WriteFile("/etc/systemd/system/ssh@.service.d/50-vorn-slice.conf", "");
        UnitSlices after;
        EXPECT_EQ(after.Of("smbd.service"), "my.slice");
        EXPECT_EQ(after.Of("ssh@1-2.service"), "") << "masked by an empty file";
        ASSERT_EQ(unlink("/etc/systemd/system/ssh@.service.d/50-vorn-slice.conf"), 0);
        ASSERT_EQ(symlink("/dev/null", "/etc/systemd/system/ssh@.service.d/50-vorn-slice.conf"), 0);
        EXPECT_EQ(UnitSlices().Of("ssh@1-2.service"), "") << "masked by a link";
    });
}

TEST(Services, ThatRunOutsideTheirSliceAreNamedWithTheRemedy) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        WriteUnits();
        UnitSlices slices;
        const Findings findings = JudgeServices(
            {InV2(1, "/init.scope"), InV2(2, "/system.slice/smbd.service"),
             InV2(3, "/system.slice/smbd.service/sub"), InV2(4, "/sshd.slice/ssh.service"),
             InV2(5, "/system.slice/system-ssh.slice/ssh@1-2.service"),
             InV2(6, "/system.slice/other.service")},
            slices);
        ASSERT_EQ(findings.size(), 2U);
        EXPECT_EQ(findings[0].text, "in slices of their own: sshd.slice (1 process)");
        EXPECT_EQ(findings[1].state, VORN_FINDING_WARNING);
        EXPECT_EQ(findings[1].text,
                  "outside of the slice that names it: smbd.service runs in system.slice, not in "
                  "SMBService.slice, ssh@1-2.service runs in system.slice, not in sshd.slice");
        EXPECT_THAT(findings[1].advice, HasSubstr("systemctl restart smbd ssh@1-2,"));
        EXPECT_FALSE(findings[1].costsAnswers);
        EXPECT_EQ(JudgeServices({}, slices).size(), 1U);
    });
}

TEST(Names, ThatProcessesOfASliceLackBesideV2AreCounted) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        WriteUnits();
        UnitSlices slices;
        const GroupedProcess well = InBoth(1, "/sshd.slice/ssh.service", "/sshd.slice");
        EXPECT_TRUE(JudgeNamesBeside({well}, slices).empty());
        const Findings findings = JudgeNamesBeside(
            {well, InBoth(2, "/SMBService.slice/smbd.service", "/"),
             InBoth(3, "/SMBService.slice/smbd.service", "/"), InBoth(4, "/system.slice", "/")},
            slices);
        ASSERT_EQ(findings.size(), 1U);
        EXPECT_THAT(findings[0].text, HasSubstr("2 of 3 processes"));
        EXPECT_THAT(findings[0].text, HasSubstr("SMBService.slice (2 processes)"));
    });
}

TEST(Sessions, ThatTheLoginManagerMovedAreCounted) {
    const std::string session = "/user.slice/user-1000.slice/session-";
    const std::vector<GroupedProcess> processes = {
        {1, {session + "1.scope", std::nullopt}},  {2, {session + "1.scope", std::nullopt}},
        {3, {session + "2.scope", std::nullopt}},  {4, {session + "3.scope", std::nullopt}},
        {5, {"/sshd.slice", session + "4.scope"}}, InV2(6, session + "5.scope")};
    const Findings findings = JudgeSessions(processes, {1, 2, 3, 5, 6});
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_THAT(findings[0].text, HasSubstr("2 logins were moved to user.slice"));
    EXPECT_THAT(findings[0].advice, HasSubstr("without systemd.unified_cgroup_hierarchy=0"));
    EXPECT_TRUE(JudgeSessions(processes, {}).empty());
}

TEST(ControlGroups, AreToldWithWhatProgramsNeed) {
    struct Case {
        std::optional<std::string> named, unified;
        const char* commandLine;
        bool beside, installed, mayMount;
        const char* text;
        const char* advice;
    };
    const Case kCases[] = {
        {"/", std::nullopt, "", false, false, true, "name=systemd is mounted", ""},
        {"/", "/x", "", true, true, true, "that vorn-slices keeps", ""},
        {std::nullopt, "/x", "quiet", false, false, true, "v2 alone", "install vorn-slices"},
        {std::nullopt, "/x", "", false, true, true, "v2 alone",
         "systemctl enable --now vorn-slices"},
        {std::nullopt, "/x", "", false, false, false, "v2 alone", "no hierarchy can be mounted"},
        {std::nullopt, "/x", "cgroup_no_v1=cpu,named quiet\n", false, false, true, "v2 alone",
         "without cgroup_no_v1=named"},
        {std::nullopt, "/x", "cgroup_no_v1=all", false, false, true, "v2 alone",
         "programs install"},
        {std::nullopt, "/x", "a systemd.unified_cgroup_hierarchy=0\n", false, false, true,
         "systemd ignores it", "install vorn-slices"},
        {std::nullopt, std::nullopt, "", false, false, true, "neither", "mount the control groups"},
    };
    for (const Case& each : kCases) {
        GroupFacts facts;
        facts.own = {each.named, each.unified};
        facts.commandLine = each.commandLine;
        facts.namesBeside = each.beside;
        facts.namerInstalled = each.installed;
        facts.mayMount = each.mayMount;
        const Finding finding = JudgeControlGroups(facts);
        EXPECT_THAT(finding.text, HasSubstr(each.text));
        EXPECT_THAT(finding.advice, HasSubstr(each.advice));
        EXPECT_EQ(finding.state == VORN_FINDING_MISSING, !each.named && !each.unified);
    }
}

TEST(ServiceState, NeedsAUnit) {
    EXPECT_LT(VORNServiceStateGet(nullptr), 0);
    EXPECT_LT(VORNServiceStateGet(""), 0);
    EXPECT_EQ(VORNServiceStateGet("nobody-knows.slice"), 0);
}

TEST(ServiceState, TellsWhatIsInstalled) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        WriteUnits();
        EXPECT_EQ(VORNServiceStateGet("SMBService.slice") & VORN_SERVICE_INSTALLED,
                  VORN_SERVICE_INSTALLED);
        EXPECT_EQ(VORNServiceStateGet("sshd.slice") & VORN_SERVICE_INSTALLED, 0)
            << "a drop-in alone is no daemon";
    });
}

}  // namespace
