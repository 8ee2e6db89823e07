// SPDX-License-Identifier: MIT
#include <new>

#include "src/filehandle_internal.h"
#include "tests/unit/support/failing_new.h"
#include "tests/unit/support/service_test.h"

using namespace VORN::FileHandle;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using unit::kLocalUnits;
using unit::kVendorUnits;

namespace {

const std::string kLocalFile = std::string(kLocalUnits) + "sshd.slice";
const std::string kVendorFile = std::string(kVendorUnits) + "sshd.slice";

}  // namespace

using UnitFile = unit::ServiceTest;

TEST_F(UnitFile, IsNamedAfterTheUnitWithServiceWhereItHasNoUnitType) {
    const std::pair<const char*, const char*> rows[] = {
        {"sshd", "sshd.service"},
        {"sshd.slice", "sshd.slice"},
        {"a.service", "a.service"},
        {"a.socket", "a.socket"},
        {"a.device", "a.device"},
        {"a.mount", "a.mount"},
        {"a.automount", "a.automount"},
        {"a.swap", "a.swap"},
        {"a.target", "a.target"},
        {"a.path", "a.path"},
        {"a.timer", "a.timer"},
        {"a.scope", "a.scope"},
        {"foo.bar", "foo.bar.service"},
        {"foo.", "foo..service"},
        {"", ".service"},
        {".slice", ".slice"},
        {"a.slice.b", "a.slice.b.service"},
        {"a.b.slice", "a.b.slice"},
        {"a.Slice", "a.Slice.service"},
        {"slice", "slice.service"},
        {"a.slices", "a.slices.service"},
        {"a.slic", "a.slic.service"},
        {"..", "...service"},
        {".", "..service"},
    };
    for (const auto& [unitName, file] : rows) {
        EXPECT_EQ(UnitFileName(unitName), file);
    }
}

TEST_F(UnitFile, IsLookedForUnderTheLocalDirectoryFirst) {
    SetName(kVendorFile, "Vendor");
    std::string name;

    EXPECT_TRUE(NameGet("sshd.slice", name));

    EXPECT_EQ(name, "Vendor");
    EXPECT_THAT(
        journal.Calls(),
        ElementsAre("access(" + kLocalFile + ", 0)", "access(" + kVendorFile + ", 0)",
                    "KLIBCFileGetSectionValue(" + kVendorFile + ", X-Vornalis, Name, 1024)"));
}

TEST_F(UnitFile, UnderTheLocalDirectoryHidesTheVendors) {
    SetName(kLocalFile, "Local");
    SetName(kVendorFile, "Vendor");
    SetReference(kVendorFile, "texts:vendor");
    std::string name;
    std::unordered_map<std::string, std::string> cache;

    EXPECT_TRUE(NameGet("sshd.slice", name));
    EXPECT_EQ(name, "Local");
    EXPECT_THAT(journal.CallsOf("access"), ElementsAre("access(" + kLocalFile + ", 0)"));
    EXPECT_FALSE(NameI18nGet("sshd.slice", name, cache));
}

TEST_F(UnitFile, ThatIsNowhereSetsTheCodeAndLeavesTheName) {
    for (const char* unitName : {"", "sshd", "foo.bar", "foo.", "sshd.slice"}) {
        std::string name = "before";
        std::unordered_map<std::string, std::string> cache;

        journal.Clear();
        EXPECT_FALSE(NameGet(unitName, name));
        EXPECT_TRUE(NoUnitFileReported());
        EXPECT_EQ(journal.CallsOf("access"), BothPlaces(UnitFileName(unitName)));

        journal.Clear();
        EXPECT_FALSE(NameI18nGet(unitName, name, cache));
        EXPECT_TRUE(NoUnitFileReported());
        EXPECT_EQ(journal.CallsOf("access"), BothPlaces(UnitFileName(unitName)));

        EXPECT_EQ(name, "before");
        EXPECT_EQ(KLIBCErrGet(), 0x0700);
    }
}

using PlainName = unit::ServiceTest;

TEST_F(PlainName, IsEmptiedWhenTheUnitHasNone) {
    libc.unitFiles = {kVendorFile};
    std::string name = "before";
    EXPECT_FALSE(NameGet("sshd.slice", name));
    EXPECT_EQ(name, "");

    SetName(kVendorFile, "");
    name = "before";
    EXPECT_FALSE(NameGet("sshd.slice", name));
    EXPECT_EQ(name, "");
}

TEST_F(PlainName, IsNoneUnlessTheReaderReturnsZero) {
    SetName(kVendorFile, "left in the buffer");
    for (int result : {1, -1}) {
        platform.sectionResult = result;
        std::string name = "before";
        EXPECT_FALSE(NameGet("sshd.slice", name));
        EXPECT_EQ(name, "");
    }
}

TEST_F(PlainName, IsTakenAsItStandsUpToThe1023Bytes) {
    std::string name;
    for (const std::string& value : {std::string(" a: \xff\t"), std::string(1023, 'x')}) {
        SetName(kVendorFile, value);
        EXPECT_TRUE(NameGet("sshd.slice", name));
        EXPECT_EQ(name, value);
    }
    SetName(kVendorFile, std::string(1024, 'x'));
    EXPECT_TRUE(NameGet("sshd.slice", name));
    EXPECT_EQ(name, std::string(1023, 'x'));
}

TEST_F(PlainName, StaysWhenALookupFailsForWantOfMemory) {
    SetName(kVendorFile, std::string(100, 'x'));
    int failures = 0;
    for (int number = 1;; ++number) {
        std::string name = "before";
        const unit::FailingNew failing(number);
        if (NameGet("sshd.slice", name)) {
            EXPECT_FALSE(failing.Fired());
            break;
        }
        const unit::FailingNewPause pause;
        EXPECT_EQ(name, "before");
        ++failures;
    }
    EXPECT_GT(failures, 0);
}

TEST_F(PlainName, DoesNotHideExceptionsOfOtherFamilies) {
    SetName(kVendorFile, std::string(100, 'x'));
    const unit::FailingNew failing(1, unit::FailingNew::Throws::kBoost);
    std::string name;
    EXPECT_THROW(NameGet("sshd.slice", name), unit::BoostFailure);
}

class LocalisedName : public unit::ServiceTest {
protected:
    void SetUp() override { platform.bundles["texts"] = {{"ssh", "Shell"}, {"none", ""}}; }
    bool Get(const std::string& reference) {
        SetReference(kVendorFile, reference);
        name = "before";
        return NameI18nGet("sshd.slice", name, cache);
    }

    std::string name;
    std::unordered_map<std::string, std::string> cache;
};

TEST_F(LocalisedName, ComesFromTheBundleAndGoesIntoTheCache) {
    EXPECT_TRUE(Get("texts:ssh"));

    EXPECT_EQ(name, "Shell");
    EXPECT_THAT(cache, ElementsAre(std::make_pair("texts:ssh", "Shell")));
    EXPECT_THAT(
        journal.Calls(),
        ElementsAre("access(" + kLocalFile + ", 0)", "access(" + kVendorFile + ", 0)",
                    "KLIBCFileGetSectionValue(" + kVendorFile + ", X-Vornalis, NameI18n, 1024)",
                    "StringBundle(texts, null, null, null, null, null)",
                    "StringBundle::Text(texts, ssh, )", "~StringBundle(texts)"));
}

TEST_F(LocalisedName, IsRefusedUnlessTheReferenceHasTwoFields) {
    for (const char* reference : {"", "  ", "texts", "texts:ssh:", ":texts:ssh", "texts::ssh"}) {
        EXPECT_FALSE(Get(reference)) << reference;
        EXPECT_EQ(name, "before") << reference;
    }
    EXPECT_THAT(cache, IsEmpty());
    EXPECT_THAT(journal.CallsOf("StringBundle"), IsEmpty());
}

TEST_F(LocalisedName, IsRefusedWithoutAValueEvenIfTheCacheHasTheEmptyReference) {
    libc.unitFiles = {kVendorFile};
    cache[""] = "Empty";
    name = "before";
    EXPECT_FALSE(NameI18nGet("sshd.slice", name, cache));
    EXPECT_EQ(name, "before");
}

TEST_F(LocalisedName, IsEmptiedAndNotCachedWhenTheTextIsEmpty) {
    for (const char* reference : {"texts:none", "texts:unknown", "nowhere:ssh", ":", "texts:"}) {
        EXPECT_FALSE(Get(reference)) << reference;
        EXPECT_EQ(name, "") << reference;
    }
    EXPECT_THAT(cache, IsEmpty());
}

TEST_F(LocalisedName, InTheCacheNeedsNoBundle) {
    cache["service:internal_service"] = "Seeded";
    EXPECT_TRUE(Get("service:internal_service"));
    EXPECT_EQ(name, "Seeded");
    EXPECT_THAT(journal.CallsOf("StringBundle"), IsEmpty());
}

TEST_F(LocalisedName, InTheCacheIsTakenAsItIs) {
    cache["texts:ssh"] = "";
    EXPECT_TRUE(Get("texts:ssh"));
    EXPECT_EQ(name, "");
}

TEST_F(LocalisedName, IsLookedUpTrimmedButCachedUntrimmed) {
    EXPECT_TRUE(Get(" \ttexts:ssh "));
    EXPECT_EQ(name, "Shell");
    EXPECT_THAT(journal.CallsOf("StringBundle::Text"),
                ElementsAre("StringBundle::Text(texts, ssh, )"));
    EXPECT_THAT(cache, ElementsAre(std::make_pair(" \ttexts:ssh ", "Shell")));

    EXPECT_TRUE(Get("texts:ssh"));
    EXPECT_EQ(journal.CallsOf("StringBundle").size(), 2U);
    EXPECT_EQ(cache.size(), 2U);
}

TEST_F(LocalisedName, ThatIsNullThrowsAndCachesNothing) {
    platform.bundles["texts"]["null"] = std::nullopt;
    EXPECT_THROW(Get("texts:null"), std::logic_error);
    EXPECT_THROW(I18nTextGet("texts:null"), std::logic_error);
    EXPECT_THAT(cache, IsEmpty());
    EXPECT_EQ(journal.CallsOf("~StringBundle").size(), 2U);
}

TEST_F(LocalisedName, StaysWhenItsUnitFileCannotBeReadForWantOfMemory) {
    SetReference(kVendorFile, "texts:" + std::string(100, 'k'));
    platform.bundles["texts"][std::string(100, 'k')] = std::string(100, 'x');
    int refused = 0;
    int thrown = 0;
    for (int number = 1;; ++number) {
        name = "before";
        cache.clear();
        const unit::FailingNew failing(number);
        try {
            if (NameI18nGet("sshd.slice", name, cache)) {
                EXPECT_FALSE(failing.Fired());
                break;
            }
            const unit::FailingNewPause pause;
            EXPECT_EQ(name, "before") << number;
            ++refused;
        } catch (const std::bad_alloc&) {
            ++thrown;
        }
        EXPECT_THAT(cache, IsEmpty()) << number;
    }
    EXPECT_GT(refused, 0);
    EXPECT_GT(thrown, 0);
}

TEST_F(LocalisedName, DoesNotHideExceptionsOfOtherFamilies) {
    SetReference(kVendorFile, "texts:ssh");
    const unit::FailingNew failing(1, unit::FailingNew::Throws::kBoost);
    EXPECT_THROW(NameI18nGet("sshd.slice", name, cache), unit::BoostFailure);
}

TEST_F(LocalisedName, OfAReferenceIsEmptyWhenTheReferenceIsMalformed) {
    EXPECT_EQ(I18nTextGet("texts:ssh"), "Shell");
    EXPECT_EQ(I18nTextGet("\ntexts:ssh\n"), "Shell");
    journal.Clear();
    for (const char* reference : {"", " ", "texts", "texts:ssh:x", "::"}) {
        EXPECT_EQ(I18nTextGet(reference), "") << reference;
    }
    EXPECT_THAT(journal.Calls(), IsEmpty());
}
