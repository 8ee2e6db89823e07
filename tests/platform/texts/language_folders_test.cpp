// SPDX-License-Identifier: MIT
#include "platform/linux/texts/language_folders.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

using Folders = std::vector<std::string>;
using Variables = std::map<std::string, std::string>;

Folders Choose(const char* locale, const Variables& variables = {}) {
    return vornplatform::LanguageFolders(locale, [&](const char* name) -> const char* {
        const auto found = variables.find(name);
        return found != variables.end() ? found->second.c_str() : nullptr;
    });
}

TEST(LanguageFolders, FollowTheLocaleOfTheProcess) {
    const struct {
        const char* locale;
        Folders folders;
    } cases[] = {
        {"de", {"de"}},
        {"de_DE", {"de_DE", "de"}},
        {"de_DE.UTF-8", {"de_DE", "de"}},
        {"de_DE.UTF-8@euro", {"de_DE", "de"}},
        {"de@euro", {"de"}},
        {"pt_BR.UTF-8", {"pt_BR", "pt"}},
        {"zh_TW.UTF-8", {"zh_TW", "zh"}},
        {"en_GB.UTF-8", {"en_GB"}},
        {"en", {}},
        {"C.UTF-8", {}},
        {"C.utf8", {}},
        {"", {}},
    };
    for (const auto& c : cases) {
        // What is in the environment doesn't matter then.
        EXPECT_EQ(Choose(c.locale, {{"LANGUAGE", "ko"}, {"LC_ALL", "ko"}}), c.folders) << c.locale;
    }
}

TEST(LanguageFolders, FollowTheFirstSetVariableInTheUntranslatedLocale) {
    const struct {
        Variables variables;
        Folders folders;
    } cases[] = {
        {{}, {}},
        {{{"LANG", "de_DE.UTF-8"}}, {"de_DE", "de"}},
        {{{"LANG", "de"}, {"LC_MESSAGES", "fr"}}, {"fr"}},
        {{{"LANG", "de"}, {"LC_MESSAGES", "fr"}, {"LC_ALL", "es"}}, {"es"}},
        {{{"LANG", "de"}, {"LC_MESSAGES", "fr"}, {"LC_ALL", "es"}, {"LANGUAGE", "it"}}, {"it"}},
        {{{"LANG", "de"}, {"LC_ALL", "C"}}, {}},
        {{{"LANG", "de"}, {"LC_ALL", ""}}, {"de"}},
        {{{"LC_CTYPE", "de"}}, {}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Choose("C", c.variables), c.folders);
        EXPECT_EQ(Choose("POSIX", c.variables), c.folders);
    }
}

TEST(LanguageFolders, TakeAListOfLanguages) {
    const struct {
        const char* language;
        Folders folders;
    } cases[] = {
        {"de:fr", {"de", "fr"}},
        {"zh_TW:zh_CN:ja", {"zh_TW", "zh", "zh_CN", "ja"}},
        {"de_AT:de_DE:de", {"de_AT", "de", "de_DE"}},
        {":de::fr:", {"de", "fr"}},
        {":", {}},
        {"de:en:fr", {"de"}},
        {"en_US:de", {"en_US"}},
        {"C:de", {}},
        {"de:POSIX:fr", {"de"}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Choose("C", {{"LANGUAGE", c.language}}), c.folders) << c.language;
    }
}

TEST(LanguageFolders, NeverLeaveTheDataFolder) {
    for (const char* language : {"../de", "/etc", "..", "de/..", "d e", "de\n"}) {
        EXPECT_EQ(Choose("C", {{"LANGUAGE", language}}), Folders()) << language;
    }
    EXPECT_EQ(Choose("C", {{"LANGUAGE", "../de:fr"}}), Folders{"fr"});
}

}  // namespace
