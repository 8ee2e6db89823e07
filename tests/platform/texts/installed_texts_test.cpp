// SPDX-License-Identifier: MIT
// The texts and units that are installed with the library.
#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "platform/linux/texts/compiled_texts.h"
#include "platform/linux/texts/texts_folder.h"
#include "vorn/platform/file.h"
#include "vorn/platform/string_bundle.h"

namespace {

namespace fs = std::filesystem;

const fs::path kData = VORN_TEST_DATA_FOLDER;

std::string Content(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::set<std::string> NamesIn(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.insert(entry.path().filename());
    }
    return names;
}

// Texts by key. Every line of a bundle is a comment, the one section header or an assignment.
std::map<std::string, std::string> TextsOf(const std::string& language) {
    std::map<std::string, std::string> texts;
    std::istringstream lines(Content(kData / "texts" / language / "service"));
    bool inSection = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("#", 0) == 0) {
            continue;
        }
        if (!inSection) {
            EXPECT_EQ(line, "[Texts]") << language;
            inSection = true;
            continue;
        }
        const std::size_t equals = line.find('=');
        EXPECT_NE(equals, std::string::npos) << language << ": " << line;
        EXPECT_TRUE(texts.emplace(line.substr(0, equals), line.substr(equals + 1)).second)
            << language << ": " << line;
    }
    return texts;
}

// Strict: no overlong form, no surrogate, nothing above U+10FFFF.
bool IsUtf8(const std::string& text) {
    static const struct {
        unsigned char first, last;
        unsigned char second, secondLast;
        int more;
    } kForms[] = {
        {0x00, 0x7F, 0, 0, 0},       {0xC2, 0xDF, 0x80, 0xBF, 1}, {0xE0, 0xE0, 0xA0, 0xBF, 2},
        {0xE1, 0xEC, 0x80, 0xBF, 2}, {0xED, 0xED, 0x80, 0x9F, 2}, {0xEE, 0xEF, 0x80, 0xBF, 2},
        {0xF0, 0xF0, 0x90, 0xBF, 3}, {0xF1, 0xF3, 0x80, 0xBF, 3}, {0xF4, 0xF4, 0x80, 0x8F, 3},
    };
    const auto within = [](unsigned char byte, unsigned char first, unsigned char last) {
        return byte >= first && byte <= last;
    };
    for (std::size_t at = 0; at < text.size();) {
        const auto byte = [&](std::size_t i) {
            return at + i < text.size() ? static_cast<unsigned char>(text[at + i])
                                        : static_cast<unsigned char>(0);
        };
        const auto* form = std::find_if(std::begin(kForms), std::end(kForms), [&](const auto& f) {
            return within(byte(0), f.first, f.last);
        });
        if (form == std::end(kForms) ||
            (form->more > 0 && !within(byte(1), form->second, form->secondLast))) {
            return false;
        }
        for (int i = 2; i <= form->more; ++i) {
            if (!within(byte(static_cast<std::size_t>(i)), 0x80, 0xBF)) {
                return false;
            }
        }
        at += static_cast<std::size_t>(form->more) + 1;
    }
    return true;
}

TEST(StrictUtf8, TellsTextFromBytes) {
    for (const char* text : {"", "SSH", "ü", "内部サービス", "\xED\x9F\xBF", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_TRUE(IsUtf8(text)) << text;
    }
    for (const char* bytes : {"\xFC", "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80",
                              "\xF4\x90\x80\x80", "\xE5\x86", "\x80", "\xC3", "\xE5\x41\x85"}) {
        EXPECT_FALSE(IsUtf8(bytes)) << bytes;
    }
}

const std::set<std::string> kLanguages = {"de", "en", "es", "fr",    "it",    "ja",   "ko",
                                          "nl", "pl", "ru", "pt_BR", "zh_CN", "zh_TW"};

TEST(Texts, ComeInThirteenLanguages) {
    EXPECT_EQ(NamesIn(kData / "texts"), kLanguages);
}

TEST(Texts, HaveTheKeysOfEnglishInEveryLanguage) {
    std::set<std::string> keys;
    for (const auto& [key, text] : TextsOf("en")) {
        keys.insert(key);
    }
    EXPECT_EQ(keys, (std::set<std::string>{"afp", "ftp", "inetd", "internal_service", "nfs",
                                           "rsync", "smb", "ssh", "webdav"}));
    for (const std::string& language : kLanguages) {
        std::set<std::string> translated;
        for (const auto& [key, text] : TextsOf(language)) {
            EXPECT_NE(text, "") << language << ": " << key;
            translated.insert(key);
        }
        EXPECT_EQ(translated, keys) << language;
    }
}

TEST(Texts, AreUtf8) {
    for (const std::string& language : kLanguages) {
        EXPECT_TRUE(IsUtf8(Content(kData / "texts" / language / "service"))) << language;
    }
}

TEST(Texts, AreTranslated) {
    auto english = TextsOf("en");
    for (const std::string& language : kLanguages) {
        if (language != "en") {
            auto texts = TextsOf(language);
            EXPECT_NE(texts["internal_service"], english["internal_service"]) << language;
            EXPECT_NE(texts["inetd"], english["inetd"]) << language;
        }
    }
}

TEST(Texts, CallSshAlike) {
    for (const std::string& language : kLanguages) {
        EXPECT_EQ(TextsOf(language)["ssh"], "SSH") << language;
    }
}

TEST(Texts, AreFoundInEveryLanguage) {
    const std::string installed = vornplatform::TextsFolder();
    vornplatform::UseTextsFolder(kData / "texts");
    ASSERT_STREQ(std::setlocale(LC_MESSAGES, nullptr), "C");
    for (const std::string& language : kLanguages) {
        setenv("LANGUAGE", language.c_str(), 1);
        StringBundle bundle("service", nullptr, nullptr, nullptr, nullptr, nullptr);
        for (const auto& [key, text] : TextsOf(language)) {
            EXPECT_EQ(bundle.Text(key.c_str(), "(none)"), text) << language << ": " << key;
        }
    }
    unsetenv("LANGUAGE");
    vornplatform::UseTextsFolder(installed);
}

TEST(Texts, AreCompiledInAsTheEnglishBundle) {
    EXPECT_EQ(vornplatform::CompiledTexts("service"), Content(kData / "texts/en/service"));
    EXPECT_EQ(vornplatform::CompiledTexts("other"), "");
}

std::string Value(const fs::path& unit, const char* section, const char* key) {
    char buffer[1024] = {};
    EXPECT_EQ(KLIBCFileGetSectionValue(unit.c_str(), section, key, buffer, sizeof buffer), 0)
        << unit << ' ' << key;
    return buffer;
}

const std::map<std::string, std::string> kSlices = {
    {"SMBService.slice", "smb"}, {"atalk.slice", "afp"},     {"ftpd.slice", "ftp"},
    {"sshd.slice", "ssh"},       {"inetd.slice", "inetd"},   {"nfsd.slice", "nfs"},
    {"rsyncd.slice", "rsync"},   {"webdav.slice", "webdav"},
};

TEST(Slices, BearTheNameOfTheirService) {
    auto english = TextsOf("en");
    for (const auto& [slice, key] : kSlices) {
        const fs::path unit = kData / "systemd" / slice;
        EXPECT_EQ(Value(unit, "X-Vornalis", "NameI18n"), "service:" + key);
        EXPECT_EQ(Value(unit, "X-Vornalis", "Name"), english[key]) << slice;
        EXPECT_NE(Value(unit, "Unit", "Description"), "") << slice;
    }
}

TEST(Slices, TakeInTheDaemonsOfDebian) {
    const std::map<std::string, std::string> expected = {
        {"dropbear.service.d", "sshd.slice"},
        {"inetd.service.d", "inetd.slice"},
        {"inetutils-inetd.service.d", "inetd.slice"},
        {"netatalk.service.d", "atalk.slice"},
        {"nfs-ganesha.service.d", "nfsd.slice"},
        {"nfs-mountd.service.d", "nfsd.slice"},
        {"nfs-server.service.d", "nfsd.slice"},
        {"proftpd.service.d", "ftpd.slice"},
        {"proftpd@.service.d", "ftpd.slice"},
        {"pure-ftpd.service.d", "ftpd.slice"},
        {"rsync.service.d", "rsyncd.slice"},
        {"samba-ad-dc.service.d", "SMBService.slice"},
        {"smbd.service.d", "SMBService.slice"},
        {"ssh.service.d", "sshd.slice"},
        {"ssh@.service.d", "sshd.slice"},
        {"vsftpd.service.d", "ftpd.slice"},
        {"xinetd.service.d", "inetd.slice"},
    };
    std::map<std::string, std::string> slices;
    for (const std::string& name : NamesIn(kData / "systemd")) {
        if (fs::is_directory(kData / "systemd" / name)) {
            EXPECT_EQ(NamesIn(kData / "systemd" / name),
                      std::set<std::string>{"50-vorn-slice.conf"});
            slices[name] =
                Value(kData / "systemd" / name / "50-vorn-slice.conf", "Service", "Slice");
        }
    }
    EXPECT_EQ(slices, expected);
}

}  // namespace
