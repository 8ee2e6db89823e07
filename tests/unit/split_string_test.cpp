// SPDX-License-Identifier: MIT
#include <boost/exception/exception.hpp>
#include <locale>
#include <new>

#include "src/filehandle_internal.h"
#include "tests/unit/support/failing_new.h"
#include "tests/unit/support/service_test.h"

using namespace VORN::FileHandle;

namespace {

struct SplitCase {
    const char* text;
    const char* separators;
    std::vector<std::string> fields;
};

const SplitCase kSplits[] = {
    {"a:b", ":", {"a", "b"}},
    {"a", ":", {"a"}},
    {":", ":", {"", ""}},
    {"a::b:", ":", {"a", "", "b", ""}},
    {" \t\n\v\f\ra b \r\f\v\n\t", ":", {"a b"}},
    {"a : b", ":", {"a ", " b"}},
    {"/a.slice/b", "/", {"", "a.slice", "b"}},
    {"a:b/c", ":/", {"a", "b", "c"}},
    {"a:b", "", {"a:b"}},
    {"\xc2\xa0:\xff", ":", {"\xc2\xa0", "\xff"}},
    {"", ":", {"what", "was", "there"}},
    {" \t\n", ":", {"what", "was", "there"}},
};

}  // namespace

class Split : public unit::LibraryTest {
protected:
    bool Run(const std::string& text, const std::string& separators) {
        fields = {"what", "was", "there"};
        return SplitString(text, fields, separators);
    }
    std::vector<std::string> fields;
    const std::string longText = std::string(40, 'a') + ":" + std::string(40, 'b');
};

TEST_F(Split, TrimsAndKeepsEmptyFields) {
    for (const SplitCase& row : kSplits) {
        EXPECT_TRUE(Run(row.text, row.separators)) << row.text;
        EXPECT_EQ(fields, row.fields) << row.text;
    }
}

TEST_F(Split, TrimsByTheGlobalLocale) {
    /** Calls "_" a white space. */
    struct Underscore : std::ctype<char> {
        Underscore() : std::ctype<char>(Table()) {}
        static const mask* Table() {
            static std::vector<mask> table(classic_table(), classic_table() + table_size);
            table['_'] = space;
            return table.data();
        }
    };
    const std::locale before = std::locale::global(std::locale(std::locale(), new Underscore));
    EXPECT_TRUE(Run("_a_a:b_", ":"));
    std::locale::global(before);
    EXPECT_THAT(fields, ::testing::ElementsAre("a_a", "b"));
    EXPECT_TRUE(Run("_a:b_", ":"));
    EXPECT_THAT(fields, ::testing::ElementsAre("_a", "b_"));
}

TEST_F(Split, ReportsAnExceptionOfTheBoostFamilyButNotOneFromTheTrimming) {
    int reported = 0;
    int passedOn = 0;
    for (int number = 1;; ++number) {
        const unit::FailingNew failing(number, unit::FailingNew::Throws::kBoost);
        try {
            if (!Run(longText, ":")) {
                const unit::FailingNewPause pause;
                EXPECT_TRUE(ErrorSet(0x2A00, unit::kServiceSource, 39));
                ++reported;
            }
        } catch (const boost::exception&) {
            ++passedOn;
        }
        if (!failing.Fired()) {
            break;
        }
    }
    EXPECT_GT(reported, 0);
    EXPECT_GT(passedOn, 0);
}

TEST_F(Split, LetsAFailedAllocationThrough) {
    int thrown = 0;
    for (int number = 1;; ++number) {
        const unit::FailingNew failing(number);
        try {
            EXPECT_TRUE(Run(longText, ":"));
        } catch (const std::bad_alloc&) {
            ++thrown;
            continue;
        }
        if (!failing.Fired()) {
            break;
        }
    }
    EXPECT_GT(thrown, 1);
}
