// SPDX-License-Identifier: MIT
#include <algorithm>
#include <new>
#include <set>

#include "tests/unit/support/failing_new.h"
#include "tests/unit/support/service_test.h"

using namespace VORN::FileHandle;
using ::testing::ElementsAre;

namespace {

const std::vector<std::string> kUnits = {"SMBService.slice", "atalk.slice", "ftpd.slice",
                                         "sshd.slice", "inetd.slice"};

}  // namespace

class KickableServices : public unit::ServiceTest {
protected:
    void SetUp() override {
        for (const std::string& unit : kUnits) {
            AddUnit(unit, "plain " + unit, "localised " + unit);
        }
    }
    ::testing::AssertionResult MissingLogged(const char* unit) {
        return Logged(LOG_ERR, "%s:%d Get kickable service list error. service:[%s]",
                      "filehandle_get_kickable_service_list", 47, unit);
    }

    std::list<std::string> services;
};

TEST_F(KickableServices, AreFiveSlices) {
    EXPECT_EQ(std::vector<std::string>(std::begin(gszKickableServiceTable),
                                       std::end(gszKickableServiceTable)),
              kUnits);
}

TEST_F(KickableServices, AreListedInTheOrderOfTheTableByTheirLocalisedNames) {
    GetKickableServiceList(services);

    EXPECT_THAT(services, ElementsAre("localised SMBService.slice", "localised atalk.slice",
                                      "localised ftpd.slice", "localised sshd.slice",
                                      "localised inetd.slice"));
}

TEST_F(KickableServices, NeedNoPlainNameWhenTheyHaveALocalisedOne) {
    GetKickableServiceList(services);

    for (const std::string& call : journal.CallsOf("KLIBCFileGetSectionValue")) {
        EXPECT_THAT(call, ::testing::EndsWith(", X-Vornalis, NameI18n, 1024)"));
    }
}

TEST_F(KickableServices, FallBackToThePlainName) {
    platform.bundles["texts"]["ftpd.slice"] = "";
    SetReference(std::string(unit::kVendorUnits) + "sshd.slice", "not a reference");

    GetKickableServiceList(services);

    EXPECT_THAT(services,
                ElementsAre("localised SMBService.slice", "localised atalk.slice",
                            "plain ftpd.slice", "plain sshd.slice", "localised inetd.slice"));
}

TEST_F(KickableServices, AreAppendedToWhatTheListHolds) {
    services = {"mine"};

    GetKickableServiceList(services);
    GetKickableServiceList(services);

    ASSERT_EQ(services.size(), 11U);
    EXPECT_EQ(services.front(), "mine");
    EXPECT_EQ(*std::next(services.begin()), *std::next(services.begin(), 6));
}

TEST_F(KickableServices, LeaveOutAUnitWithoutAFile) {
    libc.unitFiles.erase(std::string(unit::kVendorUnits) + "atalk.slice");

    GetKickableServiceList(services);

    EXPECT_THAT(services, ElementsAre("localised SMBService.slice", "localised ftpd.slice",
                                      "localised sshd.slice", "localised inetd.slice"));
    EXPECT_TRUE(MissingLogged("atalk.slice"));
    EXPECT_TRUE(NoUnitFileReported());
    EXPECT_TRUE(NoUnitFileReported());
}

TEST_F(KickableServices, LeaveOutAUnitWithoutAnyName) {
    platform.sectionValues.clear();

    GetKickableServiceList(services);

    EXPECT_THAT(services, ElementsAre());
    for (const std::string& unit : kUnits) {
        EXPECT_TRUE(MissingLogged(unit.c_str()));
    }
}

TEST_F(KickableServices, WithTheSameNameBothAppear) {
    platform.bundles["texts"]["ftpd.slice"] = "Same";
    platform.bundles["texts"]["sshd.slice"] = "Same";

    GetKickableServiceList(services);

    EXPECT_EQ(std::count(services.begin(), services.end(), "Same"), 2);
}

TEST_F(KickableServices, LookUpACommonReferenceOncePerCall) {
    for (const std::string& unit : kUnits) {
        SetReference(unit::kVendorUnits + unit, "texts:common");
    }
    platform.bundles["texts"]["common"] = "Common";

    GetKickableServiceList(services);
    EXPECT_EQ(journal.CallsOf("StringBundle").size(), 1U);

    GetKickableServiceList(services);
    EXPECT_EQ(journal.CallsOf("StringBundle").size(), 2U);
    EXPECT_EQ(std::count(services.begin(), services.end(), "Common"), 10);
}

TEST_F(KickableServices, ShowNoDefaultNameUnasked) {
    SetReference(std::string(unit::kVendorUnits) + "sshd.slice", "service:internal_service");
    platform.bundles["service"]["internal_service"] = "Internal";

    GetKickableServiceList(services);

    EXPECT_EQ(*std::next(services.begin(), 3), "Internal");
    EXPECT_THAT(journal.CallsOf("StringBundle::Text"),
                ::testing::Contains("StringBundle::Text(service, internal_service, )"));
}

TEST_F(KickableServices, KeepTheNamesBeforeATextThatIsNull) {
    platform.bundles["texts"]["ftpd.slice"] = std::nullopt;

    EXPECT_THROW(GetKickableServiceList(services), std::logic_error);

    EXPECT_THAT(services, ElementsAre("localised SMBService.slice", "localised atalk.slice"));
}

TEST_F(KickableServices, KeepTheNamesBeforeAFailedAllocation) {
    std::list<std::string> all;
    GetKickableServiceList(all);
    std::set<size_t> kept;
    for (int number = 1;; ++number) {
        services.clear();
        const unit::FailingNew failing(number);
        try {
            GetKickableServiceList(services);
            if (!failing.Fired()) {
                break;
            }
        } catch (const std::bad_alloc&) {
            const unit::FailingNewPause pause;
            ASSERT_LT(services.size(), all.size());
            EXPECT_TRUE(std::equal(services.begin(), services.end(), all.begin())) << number;
            kept.insert(services.size());
        }
    }
    EXPECT_THAT(kept, ElementsAre(0, 1, 2, 3, 4));
}
