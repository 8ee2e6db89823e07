// SPDX-License-Identifier: MIT
#include "tests/unit/support/service_names_test.h"

using namespace VORN::FileHandle;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using unit::kLocalUnits;
using unit::kServiceSource;
using unit::kVendorUnits;

using ServiceNames = unit::ServiceNamesTest;

TEST_F(ServiceNames, OfAnEmptyListNeedOnlyTheDefaultName) {
    EXPECT_THAT(Run({}), IsEmpty());
    EXPECT_THAT(journal.Calls(), ElementsAre("StringBundle(service, null, null, null, null, null)",
                                             "StringBundle::Text(service, internal_service, )",
                                             "~StringBundle(service)"));
}

TEST_F(ServiceNames, PreferTheLocalisedName) {
    AddUnit("sshd.slice", "Plain", "Localised");
    Put("7", "/sshd.slice/sshd.service");

    EXPECT_THAT(Run({"7"}), ElementsAre("Localised"));

    const std::string file = std::string(kVendorUnits) + "sshd.slice";
    EXPECT_THAT(
        journal.Calls(),
        ElementsAre("StringBundle(service, null, null, null, null, null)",
                    "StringBundle::Text(service, internal_service, )", "~StringBundle(service)",
                    "open(/proc/7/cgroup)", "access(" + std::string(kLocalUnits) + "sshd.slice, 0)",
                    "access(" + file + ", 0)",
                    "KLIBCFileGetSectionValue(" + file + ", X-Vornalis, NameI18n, 1024)",
                    "StringBundle(texts, null, null, null, null, null)",
                    "StringBundle::Text(texts, sshd.slice, )", "~StringBundle(texts)"));
}

TEST_F(ServiceNames, FallBackToThePlainName) {
    SetName(std::string(kLocalUnits) + "a.slice", "Plain");
    AddUnit("b.slice", "Without text", "");
    Put("7", "/a.slice/x");
    Put("8", "/b.slice");

    EXPECT_THAT(Run({"7", "8"}), ElementsAre("Plain", "Without text"));

    const std::string file = std::string(kLocalUnits) + "a.slice";
    const std::vector<std::string> calls = journal.CallsOf({"access", "KLIBCFileGetSectionValue"});
    EXPECT_THAT(std::vector<std::string>(calls.begin(), calls.begin() + 4),
                ElementsAre("access(" + file + ", 0)",
                            "KLIBCFileGetSectionValue(" + file + ", X-Vornalis, NameI18n, 1024)",
                            "access(" + file + ", 0)",
                            "KLIBCFileGetSectionValue(" + file + ", X-Vornalis, Name, 1024)"));
}

TEST_F(ServiceNames, OfAProcessWithANameAreReadOnce) {
    AddUnit("sshd.slice", "Plain", "Shell");
    SetName(std::string(kVendorUnits) + "smb.slice", "Files");
    Put("7", "/sshd.slice");
    Put("8", "/smb.slice");

    EXPECT_THAT(Run({"7", "8", "7", "8", "7"}),
                ElementsAre("Shell", "Files", "Shell", "Files", "Shell"));
    EXPECT_THAT(journal.CallsOf("open"),
                ElementsAre("open(/proc/7/cgroup)", "open(/proc/8/cgroup)"));
}

TEST_F(ServiceNames, OfAProcessWithoutANameAreReadAgainForEachRecord) {
    Put("7", "/a.slice");
    Put("8", "/b.slice");
    libc.unitFiles = {std::string(kVendorUnits) + "b.slice"};

    EXPECT_THAT(Run({"7", "8", "7", "8"}),
                ElementsAre("Internal", "Internal", "Internal", "Internal"));

    EXPECT_THAT(journal.CallsOf("open"),
                ElementsAre("open(/proc/7/cgroup)", "open(/proc/8/cgroup)", "open(/proc/7/cgroup)",
                            "open(/proc/8/cgroup)"));
    for (int lookup = 0; lookup < 4; ++lookup) {
        EXPECT_TRUE(NoUnitFileReported());
    }
}

TEST_F(ServiceNames, OfAProcessMayBeFoundLater) {
    journal.onCall = [this](const std::string& call) {
        if (call == "open(/proc/7/cgroup)" && journal.CallsOf("open").size() == 2) {
            Put("7", "/late.slice");
            SetName(std::string(kVendorUnits) + "late.slice", "Late");
        }
    };
    EXPECT_THAT(Run({"7", "7", "7"}), ElementsAre("Internal", "Late", "Late"));
    EXPECT_TRUE(GoneLogged("7"));
    EXPECT_EQ(journal.CallsOf("open").size(), 2U);
}

TEST_F(ServiceNames, OfAProcessThatHasGoneAreTheDefaultWithOneLineARecord) {
    SetName(std::string(kVendorUnits) + "a.slice", "Here");
    Put("8", "/a.slice");

    EXPECT_THAT(Run({"7", "8", "7"}), ElementsAre("Internal", "Here", "Internal"));
    EXPECT_TRUE(GoneLogged("7"));
    EXPECT_TRUE(GoneLogged("7"));
}

TEST_F(ServiceNames, AreTheDefaultWithoutAUsableSystemdLine) {
    libc.controlGroups = {{"1", "0::/sshd.slice/sshd.service\n"},
                          {"2", "1:name=systemd:/sshd.slice/a:b\n"},
                          {"3", ""},
                          {"4", "1:name=systemd:\n"}};
    AddUnit("sshd.slice", "Plain", "Shell");

    EXPECT_THAT(Run({"1", "2", "3", "4"}),
                ElementsAre("Internal", "Internal", "Internal", "Internal"));
    EXPECT_THAT(journal.CallsOf("access"), IsEmpty());
}

TEST_F(ServiceNames, OfTheRootGroupAskForTheFileOfNoUnit) {
    Put("7", "/");

    EXPECT_THAT(Run({"7"}), ElementsAre("Internal"));

    std::vector<std::string> lookups = BothPlaces(".service");
    const std::vector<std::string> again = lookups;
    lookups.insert(lookups.end(), again.begin(), again.end());
    EXPECT_EQ(journal.CallsOf("access"), lookups);
    EXPECT_TRUE(NoUnitFileReported());
    EXPECT_TRUE(NoUnitFileReported());
}

TEST_F(ServiceNames, LeaveTheCodeOfAMissingUnitFileBehind) {
    Put("7", "/a.slice");
    Put("8", "/sshd.slice");
    AddUnit("sshd.slice", "Plain", "Shell");

    EXPECT_THAT(Run({"7", "8"}), ElementsAre("Internal", "Shell"));
    EXPECT_EQ(KLIBCErrGet(), 0x0700);
    EXPECT_TRUE(NoUnitFileReported());
    EXPECT_TRUE(NoUnitFileReported());
}

TEST_F(ServiceNames, OfAUserSessionAreThoseOfTheUserSlice) {
    Put("7", "/user.slice/user-1000.slice/user-1000-2.scope");
    SetName(std::string(kVendorUnits) + "user.slice", "Users");
    SetName(std::string(kVendorUnits) + "user-1000-2.scope", "Session");

    EXPECT_THAT(Run({"7"}), ElementsAre("Users"));
}

TEST_F(ServiceNames, AreFoundBehindAnyNumberOfOtherLines) {
    SetName(std::string(kVendorUnits) + "a.slice", "Far");
    for (size_t length : {4080U, 4095U, 4096U, 4097U, 9000U}) {
        libc.controlGroups["7"] =
            "2:cpu:/" + std::string(length - 8, 'x') + "\n 1:name=systemd:/a.slice/b ";
        EXPECT_THAT(Run({"7"}), ElementsAre("Far")) << length;
    }
}

TEST_F(ServiceNames, OpenTheDefaultTextOnlyOnceForUnitsThatReferToIt) {
    SetReference(std::string(kVendorUnits) + "a.slice", "service:internal_service");
    SetName(std::string(kVendorUnits) + "a.slice", "Plain");
    Put("7", "/a.slice");

    EXPECT_THAT(Run({"7"}), ElementsAre("Internal"));
    EXPECT_EQ(journal.CallsOf("StringBundle").size(), 1U);
}

TEST_F(ServiceNames, OpenACommonTextOnceEvenWithBlanksAroundItsReference) {
    for (const char* unitName : {"a.slice", "b.slice"}) {
        SetReference(kVendorUnits + std::string(unitName), " service:internal_service ");
    }
    Put("7", "/a.slice");
    Put("8", "/b.slice");

    EXPECT_THAT(Run({"7", "8"}), ElementsAre("Internal", "Internal"));
    EXPECT_THAT(journal.CallsOf("StringBundle::Text"),
                ElementsAre("StringBundle::Text(service, internal_service, )",
                            "StringBundle::Text(service, internal_service, )"));
    EXPECT_EQ(journal.CallsOf("~StringBundle").size(), 2U);
}

TEST_F(ServiceNames, AreForgottenAfterTheCall) {
    AddUnit("a.slice", "Plain", "Before");
    Put("7", "/a.slice");
    EXPECT_THAT(Run({"7"}), ElementsAre("Before"));

    platform.bundles["texts"]["a.slice"] = "After";
    EXPECT_THAT(Run({"7"}), ElementsAre("After"));
}

TEST_F(ServiceNames, ChangeNothingElse) {
    AddUnit("a.slice", "", "A");
    Put("7", "/a.slice");
    files = unit::Records({{"7", "/volume1/b"}, {"7", "/volume1/a"}, {"7", "/volume1/a"}});
    files.front().setHost("host");
    files.front().setUser("user");
    const auto before = unit::Shown(files);

    EXPECT_EQ(GetServiceName(files), 0);

    EXPECT_EQ(unit::Shown(files), before);
    EXPECT_EQ(files.front().getHost() + files.front().getUser(), "hostuser");
    EXPECT_EQ(files.front().getPath() + files.front().getFilename(), "");
}
