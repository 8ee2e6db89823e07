// SPDX-License-Identifier: MIT
#include <dirent.h>

#include <memory>
#include <new>

#include "tests/unit/support/failing_new.h"
#include "tests/unit/support/service_names_test.h"

using namespace VORN::FileHandle;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using unit::kServiceSource;
using unit::kVendorUnits;

namespace {

size_t OpenDescriptors() {
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir("/proc/self/fd"), closedir);
    size_t count = 0;
    while (readdir(directory.get()) != nullptr) {
        ++count;
    }
    return count;
}

}  // namespace

using ServiceNames = unit::ServiceNamesTest;

TEST_F(ServiceNames, TouchNoRecordWhenTheDefaultTextIsNull) {
    platform.bundles["service"]["internal_service"] = std::nullopt;
    files = unit::Records({{"7", "/volume1/a"}});
    files.front().setServiceName("old");

    EXPECT_THROW(GetServiceName(files), std::logic_error);

    EXPECT_THAT(Names(), ElementsAre("old"));
    EXPECT_THAT(journal.CallsOf("open"), IsEmpty());
}

TEST_F(ServiceNames, StayWhereALaterTextIsNull) {
    AddUnit("a.slice", "", "A");
    AddUnit("b.slice", "Plain", "");
    platform.bundles["texts"]["b.slice"] = std::nullopt;
    Put("7", "/a.slice");
    Put("8", "/b.slice");
    files = unit::Records({{"7", "/volume1/a"}, {"8", "/volume1/b"}});

    EXPECT_THROW(GetServiceName(files), std::logic_error);

    EXPECT_THAT(Names(), ElementsAre("A", ""));
}

TEST_F(ServiceNames, FailAtTheFirstRecordWithoutOneWhenTheDefaultIsEmpty) {
    platform.bundles.erase("service");
    AddUnit("a.slice", "", "A");
    Put("7", "/a.slice");
    Put("8", "/a.slice");
    libc.controlGroups["9"] = "0::/a.slice\n";

    EXPECT_THAT(Run({"7", "9", "8"}, -1), ElementsAre("A", "", ""));

    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Invaild Argument (%s)=[%d]\n", "filehandle_opened_file", 56,
                       "!serviceName.empty()", 0));
    EXPECT_TRUE(
        Logged(LOG_ERR, "%s:%d Failed to set service name for opened file", kServiceSource, 277));
    EXPECT_TRUE(ErrorSet(0x0D00, "filehandle_opened_file", 56));
    EXPECT_THAT(Run({"7", "8"}), ElementsAre("A", "A"));
}

TEST_F(ServiceNames, FailForAUnitThatRefersToAnEmptyDefaultThoughItHasAPlainName) {
    platform.bundles.erase("service");
    SetReference(std::string(kVendorUnits) + "a.slice", "service:internal_service");
    SetName(std::string(kVendorUnits) + "a.slice", "Plain");
    Put("7", "/a.slice");

    EXPECT_THAT(Run({"7"}, -1), ElementsAre(""));

    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Invaild Argument (%s)=[%d]\n", "filehandle_opened_file", 56,
                       "!serviceName.empty()", 0));
    EXPECT_TRUE(
        Logged(LOG_ERR, "%s:%d Failed to set service name for opened file", kServiceSource, 277));
    EXPECT_TRUE(ErrorSet(0x0D00, "filehandle_opened_file", 56));
    EXPECT_THAT(journal.CallsOf("KLIBCFileGetSectionValue"),
                ElementsAre(::testing::EndsWith(", NameI18n, 1024)")));
}

TEST_F(ServiceNames, CloseTheControlGroupFileAtOnce) {
    AddUnit("a.slice", "", "A");
    Put("7", "/a.slice");
    Put("8", "/a.slice");
    size_t open = 0;
    journal.onCall = [&open](const std::string& call) {
        if (call.rfind("access(", 0) == 0) {
            open = OpenDescriptors();
        }
    };
    const size_t before = OpenDescriptors();
    Run({"7", "8"});
    EXPECT_EQ(open, before);
    EXPECT_EQ(OpenDescriptors(), before);
}

class ServiceNamesShortOfMemory : public ServiceNames {
protected:
    /** Whether the record's control-group file could not be opened for want of memory. */
    bool OpeningFailed() {
        const unit::FailingNewPause pause;
        if (libc.logLines.size() == linesBefore) {
            return false;
        }
        ++linesBefore;
        EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to open pid %s cgroup, error=[%s]",
                           kServiceSource, 136, "1234567", std::bad_alloc().what()));
        EXPECT_EQ(Names().front(), "Internal");
        return true;
    }
    size_t linesBefore = 0;
};

TEST_F(ServiceNamesShortOfMemory, GiveTheDefaultWhenTheFileCannotBeOpenedAndThrowOtherwise) {
    AddUnit("a.slice", "", "A");
    Put("1234567", "/a.slice");
    int failedOpenings = 0;
    int thrown = 0;
    for (int number = 1;; ++number) {
        files = unit::Records({{"1234567", "/volume1/a"}, {"1234567", "/volume1/b"}});
        const size_t descriptors = OpenDescriptors();
        try {
            const unit::FailingNew failing(number);
            EXPECT_EQ(GetServiceName(files), 0);
            const unit::FailingNewPause pause;
            failedOpenings += OpeningFailed() ? 1 : 0;
            EXPECT_EQ(Names().back(), "A");
            if (!failing.Fired()) {
                break;
            }
        } catch (const std::bad_alloc&) {
            ++thrown;
        }
        EXPECT_EQ(OpenDescriptors(), descriptors);
        EXPECT_EQ(files.size(), 2U);
    }
    EXPECT_GT(failedOpenings, 0);
    EXPECT_GT(thrown, 0);
}
