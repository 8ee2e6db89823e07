// SPDX-License-Identifier: MIT
#include "vorn/platform/string_bundle.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/linux/texts/texts_folder.h"
#include "tests/platform/support/temp_folder.h"
#include "vorn/platform/error.h"

namespace {

// Texts in a folder of the test's own, in an environment that names no language.
class StringBundles : public testing::Test {
protected:
    StringBundles() : installed_(vornplatform::TextsFolder()) {
        for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
            unsetenv(name);
        }
        vornplatform::UseTextsFolder(folder_.Path("texts"));
        KLIBCErrSetEx(0, "string_bundle_test", __LINE__);
    }
    ~StringBundles() override {
        EXPECT_EQ(KLIBCErrGet(), 0);
        std::setlocale(LC_MESSAGES, "C");
        unsetenv("LANGUAGE");
        vornplatform::UseTextsFolder(installed_);
    }

    void Install(const std::string& language, const std::string& bundle, const std::string& texts) {
        folder_.Write("texts/" + language + "/" + bundle, "[Texts]\n" + texts);
    }

    static std::string Text(const char* key, const char* fallback = "(none)",
                            const char* bundle = "service") {
        StringBundle texts(bundle, nullptr, nullptr, nullptr, nullptr, nullptr);
        return texts.Text(key, fallback);
    }

    TempFolder folder_;

private:
    std::string installed_;
};

TEST_F(StringBundles, SpeakEnglishWhereNothingIsInstalled) {
    setenv("LANGUAGE", "de", 1);
    EXPECT_EQ(Text("internal_service"), "Internal service");
    EXPECT_EQ(Text("ssh"), "SSH");
}

TEST_F(StringBundles, SpeakTheLanguageOfTheEnvironment) {
    Install("de", "service", "internal_service=Interner Dienst\n");
    setenv("LANGUAGE", "de_AT.UTF-8", 1);
    EXPECT_EQ(Text("internal_service"), "Interner Dienst");
}

TEST_F(StringBundles, SpeakTheLanguageOfTheProcessAboveAll) {
    const char* anyLocale = "/usr/lib/locale/C.utf8";
    if (!std::filesystem::exists(anyLocale)) {
        GTEST_SKIP() << "there is no " << anyLocale << " to make a locale from";
    }
    // A locale by a name of our choice, whichever ones this machine has.
    std::filesystem::create_directory_symlink(anyLocale, folder_.Path("fr_FR.UTF-8"));
    setenv("LOCPATH", folder_.Path().c_str(), 1);
    const char* locale = std::setlocale(LC_MESSAGES, "fr_FR.UTF-8");
    unsetenv("LOCPATH");
    ASSERT_STREQ(locale, "fr_FR.UTF-8");
    Install("de", "service", "internal_service=Interner Dienst\n");
    Install("fr", "service", "internal_service=Service interne\n");
    setenv("LANGUAGE", "de", 1);
    EXPECT_EQ(Text("internal_service"), "Service interne");
}

TEST_F(StringBundles, FallBackKeyByKey) {
    Install("zh_TW", "service", "first=1 zh_TW\n");
    Install("zh", "service", "first=1 zh\nsecond=2 zh\n");
    Install("ja", "service", "second=2 ja\nthird=3 ja\n");
    Install("en", "service", "third=3 en\nfourth=4 en\n");
    setenv("LANGUAGE", "zh_TW:ja", 1);
    EXPECT_EQ(Text("first"), "1 zh_TW");
    EXPECT_EQ(Text("second"), "2 zh");
    EXPECT_EQ(Text("third"), "3 ja");
    EXPECT_EQ(Text("fourth"), "4 en");
    EXPECT_EQ(Text("internal_service"), "Internal service");
    EXPECT_EQ(Text("fifth"), "(none)");
}

TEST_F(StringBundles, AnswerWithTheFallbackForAnUnknownKey) {
    Install("en", "service", "empty=\n=nameless\n[Other]\nother=x\n");
    for (const char* key : {"unknown", "", "empty", "other", "SSH", "[Texts]"}) {
        EXPECT_EQ(Text(key), "(none)") << key;
    }
    EXPECT_EQ(Text(nullptr), "(none)");
    EXPECT_EQ(Text("unknown", ""), "");
}

TEST_F(StringBundles, NeverAnswerWithNull) {
    StringBundle texts("service", nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_STREQ(texts.Text("unknown", nullptr), "");
    EXPECT_STREQ(texts.Text(nullptr, nullptr), "");
    StringBundle none(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_STREQ(none.Text("ssh", nullptr), "");
    EXPECT_STREQ(none.Text("ssh", "x"), "x");
}

TEST_F(StringBundles, RefuseNamesThatLeaveTheirFolder) {
    Install("en", "sub/service", "key=text\na/b=text\na..b=text\n");
    Install("en", "a..b", "key=text\n");
    Install("en", "plain.name", "key=text\na/b=text\na..b=text\n");
    folder_.Write("texts/outside", "[Texts]\nkey=text\n");
    for (const char* bundle : {"sub/service", "a..b", "../outside", "..", "", "/etc/passwd"}) {
        EXPECT_EQ(Text("key", "(none)", bundle), "(none)") << bundle;
    }
    EXPECT_EQ(Text("key", "(none)", "plain.name"), "text");
    EXPECT_EQ(Text("a/b", "(none)", "plain.name"), "(none)");
    EXPECT_EQ(Text("a..b", "(none)", "plain.name"), "(none)");
}

TEST_F(StringBundles, TreatAnUnreadableBundleAsAnEmptyOne) {
    std::filesystem::create_directories(folder_.Path("texts/de/service"));
    Install("fr", "service", std::string("internal_service=x\0", 19));
    setenv("LANGUAGE", "de:fr", 1);
    EXPECT_EQ(Text("internal_service"), "Internal service");
    EXPECT_EQ(Text("key", "(none)", "missing"), "(none)");
}

TEST_F(StringBundles, KeepTheirTextsForAsLongAsTheyLive) {
    StringBundle texts("service", nullptr, nullptr, nullptr, nullptr, nullptr);
    const char* first = texts.Text("internal_service", "");
    for (const char* key : {"afp", "ftp", "nfs", "smb", "ssh", "webdav"}) {
        EXPECT_STRNE(texts.Text(key, ""), "");
    }
    EXPECT_STREQ(first, "Internal service");
    EXPECT_EQ(texts.Text("internal_service", ""), first);
}

// Runs a copy of the program that prints the text for the internal service, as an ordinary user.
std::string PrintedText(const std::string& program, const std::string& texts) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        const bool ordinary = setgid(65534) == 0 && setuid(65534) == 0;
        if (ordinary) {
            execl(program.c_str(), program.c_str(), texts.c_str(), nullptr);
        }
        _exit(127);
    }
    close(ends[1]);
    char text[64] = {};
    EXPECT_GT(read(ends[0], text, sizeof text - 1), 0);
    close(ends[0]);
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    return text;
}

TEST_F(StringBundles, IgnoreTheEnvironmentInASetUserIdProgram) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can make a program that changes its user id";
    }
    struct statvfs mount {};
    ASSERT_EQ(statvfs(folder_.Path().c_str(), &mount), 0);
    if ((mount.f_flag & ST_NOSUID) != 0 || prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) != 0) {
        GTEST_SKIP() << "programs don't change their user id here (nosuid or no_new_privs)";
    }
    Install("de", "service", "internal_service=Interner Dienst\n");
    setenv("LANGUAGE", "de", 1);
    const std::string program = folder_.Path("print_text");
    std::filesystem::copy_file(VORN_TEST_PRINT_TEXT, program);
    ASSERT_EQ(chmod(program.c_str(), 0755), 0);
    EXPECT_EQ(PrintedText(program, folder_.Path("texts")), "Interner Dienst");
    ASSERT_EQ(chmod(program.c_str(), 04755), 0);
    EXPECT_EQ(PrintedText(program, folder_.Path("texts")), "Internal service");
}

}  // namespace
