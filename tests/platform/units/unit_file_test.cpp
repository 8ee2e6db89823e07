// SPDX-License-Identifier: MIT
#include "vorn/platform/file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "platform/linux/units/section_value.h"
#include "tests/platform/support/temp_folder.h"
#include "vorn/platform/error.h"

namespace {

constexpr int kBufferSize = 1024;

struct Answer {
    int result;
    int error;  // 0 when the operation set none
    std::string value;
};

Answer Ask(const std::string& path, int size = kBufferSize) {
    std::string buffer(kBufferSize, '#');
    KLIBCErrSetEx(0, "unit_file_test", __LINE__);
    const int result =
        KLIBCFileGetSectionValue(path.c_str(), "X-Vornalis", "Name", buffer.data(), size);
    return {result, KLIBCErrGet(), std::string(buffer.c_str())};
}

void ExpectNoValue(const std::string& path, int error) {
    const Answer answer = Ask(path);
    EXPECT_NE(answer.result, 0) << path;
    EXPECT_EQ(answer.error, error) << path;
    EXPECT_EQ(answer.value, "") << path;
}

struct Case {
    const char* text;
    const char* value;  // null: there is none
};

class UnitText : public testing::TestWithParam<Case> {};

TEST_P(UnitText, YieldsTheValueOfTheKeyInTheSection) {
    const TempFolder folder;
    const Answer answer = Ask(folder.Write("a.slice", GetParam().text));
    if (GetParam().value == nullptr) {
        EXPECT_NE(answer.result, 0);
        EXPECT_EQ(answer.error, KLIBC_ERR_NOT_FOUND);
        EXPECT_EQ(answer.value, "");
    } else {
        EXPECT_EQ(answer.result, 0);
        EXPECT_EQ(answer.error, 0);
        EXPECT_EQ(answer.value, GetParam().value);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Sections, UnitText,
    testing::Values(
        Case{"[X-Vornalis]\nName=a\n", "a"}, Case{"[X-Vornalis]\nName=a", "a"},
        Case{"[Unit]\nName=a\n[X-Vornalis]\nName=b\n[Install]\nName=c\n", "b"},
        Case{"\xEF\xBB\xBF[X-Vornalis]\nName=a\n", "a"}, Case{"  [X-Vornalis]  \n\tName=a\n", "a"},
        Case{"[x-vornalis]\nName=a\n", nullptr}, Case{"[X-Vornalis2]\nName=a\n", nullptr},
        Case{"[X-Vornali]\nName=a\n", nullptr}, Case{"[ X-Vornalis ]\nName=a\n", nullptr},
        Case{"[X-Vornalis]x\nName=a\n", nullptr}, Case{"[X-Vornalis\nName=a\n", nullptr},
        Case{"[X-Vornalis)\nName=a\n", nullptr}, Case{"[X-Vornalis]\n[Broken\nName=a\n", nullptr},
        Case{"Name=a\n", nullptr}, Case{"[Unit]\nName=a\n", nullptr},
        Case{"[X-Vornalis]\n", nullptr}, Case{"", nullptr}, Case{"[", nullptr},
        Case{"\n\n\n", nullptr}));

INSTANTIATE_TEST_SUITE_P(Keys, UnitText,
                         testing::Values(Case{"[X-Vornalis]\nname=a\n", nullptr},
                                         Case{"[X-Vornalis]\nNAME=a\n", nullptr},
                                         Case{"[X-Vornalis]\nNameI18n=a\n", nullptr},
                                         Case{"[X-Vornalis]\nNam=a\n", nullptr},
                                         Case{"[X-Vornalis]\nName\n", nullptr},
                                         Case{"[X-Vornalis]\nMyName=a\n", nullptr},
                                         Case{"[X-Vornalis]\n  Name\t = a\n", "a"},
                                         Case{"[X-Vornalis]\nNameI18n=service:a\nName=b\n", "b"},
                                         Case{"[X-Vornalis]\nOther=Name=a\n", nullptr}));

INSTANTIATE_TEST_SUITE_P(
    Repeated, UnitText,
    testing::Values(
        Case{"[X-Vornalis]\nName=a\nName=b\n", "b"}, Case{"[X-Vornalis]\nName=a\nName=\n", "a"},
        Case{"[X-Vornalis]\nName=a\nName=  \t\n", "a"}, Case{"[X-Vornalis]\nName=\nName=b\n", "b"},
        Case{"[X-Vornalis]\nName=a\n[Unit]\nName=x\n[X-Vornalis]\nName=b\n", "b"},
        Case{"[X-Vornalis]\nName=a\n[Unit]\nName=x\n[X-Vornalis]\nName=\n", "a"},
        Case{"[X-Vornalis]\nName=\n", nullptr}, Case{"[X-Vornalis]\nName=\nName= \n", nullptr}));

INSTANTIATE_TEST_SUITE_P(
    Comments, UnitText,
    testing::Values(Case{"# Name=x\n[X-Vornalis]\n#Name=x\nName=a\n;Name=y\n", "a"},
                    Case{"[X-Vornalis]\n  # Name=x\n\t;Name=y\n", nullptr},
                    Case{"#[X-Vornalis]\nName=a\n", nullptr},
                    Case{"[X-Vornalis]\nName=a # b ; c\n", "a # b ; c"},
                    Case{"[X-Vornalis]\nName=#a\n", "#a"}, Case{"[X-Vornalis]\nName=;a\n", ";a"},
                    Case{"[X-Vornalis]\n# x \\\nName=a\n", "a"}));

INSTANTIATE_TEST_SUITE_P(Values, UnitText,
                         testing::Values(Case{"[X-Vornalis]\nName=  a  b\tc  \n", "a  b\tc"},
                                         Case{"[X-Vornalis]\nName=a;b=c\n", "a;b=c"},
                                         Case{"[X-Vornalis]\nName==\n", "="},
                                         Case{"[X-Vornalis]\nName=\"a b\"\n", "\"a b\""},
                                         Case{"[X-Vornalis]\nName='a\n", "'a"},
                                         Case{"[X-Vornalis]\nName=[a]\n", "[a]"},
                                         Case{"[X-Vornalis]\nName=a\\nb %i $c\n", "a\\nb %i $c"},
                                         Case{"[X-Vornalis]\nName=内部サービス\n", "内部サービス"},
                                         Case{"[X-Vornalis]\nName=\xFF\xFE\n", "\xFF\xFE"}));

INSTANTIATE_TEST_SUITE_P(Continued, UnitText,
                         testing::Values(Case{"[X-Vornalis]\nName=a\\\nb\n", "a b"},
                                         Case{"[X-Vornalis]\nName=a \\\n   b \\\n\tc\n", "a  b  c"},
                                         Case{"[X-Vornalis]\nName=\\\na\n", "a"},
                                         Case{"[X-Vornalis]\nName=a\\", "a"},
                                         Case{"[X-Vornalis]\nName=a\\\n# no\n ; no\\\nb\n", "a b"},
                                         Case{"[X-Vornalis]\nName=a\\\n\nName=b\n", "b"},
                                         Case{"[X-Vornalis]\nOther=a\\\nName=b\n", nullptr},
                                         Case{"[X-Vornalis]\nName=a\\\n[Unit]\nName=b\n", "b"},
                                         Case{"[Unit]\nName=a\\\n[X-Vornalis]\nName=b\n", nullptr},
                                         Case{"[X-Vornalis]\nName=a\\\\\nName=\n", "a\\\\"},
                                         Case{"[X-Vornalis]\nName=a\\\\\\\nb\n", "a\\\\ b"},
                                         Case{"[X-Vornalis]\nName=a\\ \nb\n", "a\\"}));

INSTANTIATE_TEST_SUITE_P(CarriageReturns, UnitText,
                         testing::Values(Case{"[Unit]\r\n\r\n[X-Vornalis]\r\nName=a b\r\n", "a b"},
                                         Case{"[X-Vornalis]\r\nName=a\\\r\nb\r\n", "a b"},
                                         Case{"[X-Vornalis]\r\nName=\r\n", nullptr},
                                         Case{"[X-Vornalis]\r\n#Name=a\r\n", nullptr}));

std::string FileWithName(const std::string& name) {
    return "[X-Vornalis]\nName=" + name + "\n";
}

TEST(UnitFile, ValueThatFitsIsWhole) {
    const TempFolder folder;
    const std::string name(kBufferSize - 1, 'x');
    EXPECT_EQ(Ask(folder.Write("a.slice", FileWithName(name))).value, name);
}

TEST(UnitFile, LongValueIsCutAtAWholeCharacter) {
    const struct {
        std::size_t before;     // bytes before the character
        std::string character;  // which reaches over the limit, or just not
        std::size_t kept;
    } cases[] = {
        {1023, "a", 1023},  {1022, "ä", 1022},  {1021, "ä", 1023}, {1021, "サ", 1021},
        {1022, "サ", 1022}, {1020, "サ", 1023}, {1020, "😀", 1020}, {1022, "😀", 1022},
        {1019, "😀", 1023},  {1023, "ä", 1023},
    };
    const TempFolder folder;
    for (const auto& c : cases) {
        const std::string name = std::string(c.before, 'x') + c.character + "tail";
        const Answer answer = Ask(folder.Write("a.slice", FileWithName(name)));
        EXPECT_EQ(answer.result, 0);
        EXPECT_EQ(answer.value, name.substr(0, c.kept)) << c.before << c.character;
    }
}

TEST(UnitFile, LongValueThatIsNotUtf8IsCutAtTheLimit) {
    const TempFolder folder;
    const std::string bytes(2000, '\x80');
    for (const std::string& name : {bytes, "x" + bytes}) {
        EXPECT_EQ(Ask(folder.Write("a.slice", FileWithName(name))).value, name.substr(0, 1023));
    }
}

TEST(UnitFile, NothingIsWrittenBeyondTheSizeGiven) {
    const TempFolder folder;
    const std::string path = folder.Write("a.slice", FileWithName("abcdef"));
    for (const int size : {1, 2, 6, 7, 8}) {
        std::string buffer(16, '#');
        EXPECT_EQ(KLIBCFileGetSectionValue(path.c_str(), "X-Vornalis", "Name", buffer.data(), size),
                  0);
        const std::string kept =
            std::string("abcdef").substr(0, static_cast<std::size_t>(size) - 1);
        EXPECT_EQ(buffer.substr(0, kept.size() + 1), kept + '\0');
        EXPECT_EQ(buffer.substr(static_cast<std::size_t>(size)),
                  std::string(16 - static_cast<std::size_t>(size), '#'));
    }
}

TEST(UnitFile, NonsensicalArgumentIsRefused) {
    const TempFolder folder;
    const std::string file = folder.Write("a.slice", FileWithName("a") + "=b\n[]\nName=c\n");
    const char* path = file.c_str();
    char buffer[8] = "before";
    const struct {
        const char* path;
        const char* section;
        const char* key;
        char* buffer;
        int size;
    } cases[] = {
        {nullptr, "X-Vornalis", "Name", buffer, 8},
        {path, nullptr, "Name", buffer, 8},
        {path, "X-Vornalis", nullptr, buffer, 8},
        {path, "X-Vornalis", "Name", nullptr, 8},
        {path, "X-Vornalis", "Name", buffer, 0},
        {path, "X-Vornalis", "Name", buffer, -1},
        {path, "X-Vornalis", "Name", buffer, INT_MIN},
        {"", "X-Vornalis", "Name", buffer, 8},
        {path, "", "Name", buffer, 8},
        {path, "X-Vornalis", "", buffer, 8},
    };
    for (const auto& c : cases) {
        KLIBCErrSetEx(0, "unit_file_test", __LINE__);
        EXPECT_NE(KLIBCFileGetSectionValue(c.path, c.section, c.key, c.buffer, c.size), 0);
        EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_BAD_PARAM);
    }
}

TEST(UnitFile, MissingFileGivesNoValue) {
    const TempFolder folder;
    const std::string file = folder.Write("a.slice", FileWithName("a"));
    ExpectNoValue(folder.Path("b.slice"), KLIBC_ERR_NOT_FOUND);
    ExpectNoValue(file + "/b.slice", KLIBC_ERR_BAD_PARAM);
}

TEST(UnitFile, FolderIsRefused) {
    const TempFolder folder;
    ExpectNoValue(folder.Path(), KLIBC_ERR_BAD_PARAM);
}

TEST(UnitFile, MaskedUnitIsRefused) {
    const TempFolder folder;
    ASSERT_EQ(symlink("/dev/null", folder.Path("a.slice").c_str()), 0);
    ExpectNoValue(folder.Path("a.slice"), KLIBC_ERR_BAD_PARAM);
}

TEST(UnitFile, FifoWithoutWriterDoesNotBlock) {
    const TempFolder folder;
    ASSERT_EQ(mkfifo(folder.Path("a.slice").c_str(), 0644), 0);
    ExpectNoValue(folder.Path("a.slice"), KLIBC_ERR_BAD_PARAM);
}

// Root may read everything; for as long as this lives, a process of root is an ordinary one.
class WithoutPrivilege {
public:
    WithoutPrivilege() : user_(geteuid()) {
        if (user_ == 0) {
            EXPECT_EQ(seteuid(65534), 0);
        }
    }
    ~WithoutPrivilege() { EXPECT_EQ(seteuid(user_), 0); }

private:
    uid_t user_;
};

TEST(UnitFile, FileWithoutPermissionIsRefused) {
    const TempFolder folder;
    const std::string path = folder.Write("a.slice", FileWithName("a"));
    {
        const WithoutPrivilege restricted;
        ASSERT_EQ(Ask(path).result, 0) << "the folder itself must be open to all";
    }
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    const WithoutPrivilege restricted;
    ExpectNoValue(path, KLIBC_ERR_RESOURCE);
}

TEST(UnitFile, BinaryFileIsRefused) {
    const TempFolder folder;
    ExpectNoValue(folder.Write("a.slice", FileWithName("a") + std::string("x\0y", 3)),
                  KLIBC_ERR_BAD_PARAM);
    ExpectNoValue("/proc/self/exe", KLIBC_ERR_BAD_PARAM);
}

TEST(UnitFile, FileUpToOneMebibyteIsRead) {
    const TempFolder folder;
    std::string text = FileWithName("a");
    text.resize((1 << 20) - 2, '#');
    text += "\n#";
    ASSERT_EQ(Ask(folder.Write("a.slice", text)).value, "a");
    ExpectNoValue(folder.Write("a.slice", text + "#"), KLIBC_ERR_BAD_PARAM);
}

// Bytes that this process has read from files and pipes so far.
long BytesRead() {
    std::ifstream counters("/proc/self/io");
    std::string name;
    long count = -1;
    counters >> name >> count;
    return name == "rchar:" ? count : -1;
}

TEST(UnitFile, HugeFileIsRefusedUnread) {
    const TempFolder folder;
    const std::string path = folder.Write("a.slice", FileWithName("a"));
    ASSERT_EQ(truncate(path.c_str(), 100 << 20), 0);
    const long before = BytesRead();
    ASSERT_GE(before, 0);
    ExpectNoValue(path, KLIBC_ERR_BAD_PARAM);
    EXPECT_LT(BytesRead() - before, 1 << 20);
}

// A file of /proc says that its size is 0; this one holds the name of the thread.
TEST(UnitFile, FileThatHidesItsSizeIsReadToItsEnd) {
    char name[16] = {};
    ASSERT_EQ(prctl(PR_GET_NAME, name), 0);
    ASSERT_EQ(prctl(PR_SET_NAME, "[S]\nkey=value"), 0);
    char buffer[16] = {};
    EXPECT_EQ(KLIBCFileGetSectionValue("/proc/thread-self/comm", "S", "key", buffer, 16), 0);
    EXPECT_STREQ(buffer, "value");
    prctl(PR_SET_NAME, name);
}

TEST(UnitFile, NoDescriptorIsLeftOpen) {
    const TempFolder folder;
    const std::string path = folder.Write("a.slice", FileWithName("a"));
    const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(next);
    Ask(path);
    Ask(folder.Path());
    Ask(folder.Write("b.slice", std::string(3, '\0')));
    const int after = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(after);
    EXPECT_EQ(after, next);
}

TEST(CutUtf8, KeepsNothingWhereNoCharacterFits) {
    EXPECT_EQ(vornplatform::CutUtf8("サ", 2), "");
    EXPECT_EQ(vornplatform::CutUtf8("サ", 3), "サ");
    EXPECT_EQ(vornplatform::CutUtf8("abc", 0), "");
    EXPECT_EQ(vornplatform::CutUtf8("\x80\x80\x80", 1), "\x80");
    EXPECT_EQ(vornplatform::CutUtf8("", 0), "");
}

// Another reader's view of the units of this machine: path, section, key and value of every last
// non-empty assignment, a line each, separated by unit separators (0x1F).
constexpr const char* kOtherReader = "/usr/bin/python3 " VORN_TEST_SOURCE_FOLDER
                                     "/units/list_unit_values.py /usr/lib/systemd/system";

TEST(UnitFile, AgreesWithAnotherReaderOnEveryUnitOfThisMachine) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(kOtherReader, "r"), pclose);
    ASSERT_NE(pipe, nullptr);
    std::string listing;
    std::array<char, 65536> chunk;
    while (const std::size_t count = fread(chunk.data(), 1, chunk.size(), pipe.get())) {
        listing.append(chunk.data(), count);
    }
    std::istringstream lines(listing);
    int compared = 0;
    for (std::string path, section, key, value;
         std::getline(lines, path, '\x1F') && std::getline(lines, section, '\x1F') &&
         std::getline(lines, key, '\x1F') && std::getline(lines, value);
         ++compared) {
        std::string buffer(1 << 16, '#');
        EXPECT_EQ(KLIBCFileGetSectionValue(path.c_str(), section.c_str(), key.c_str(),
                                           buffer.data(), static_cast<int>(buffer.size())),
                  0);
        EXPECT_EQ(buffer.c_str(), value) << path << " [" << section << "] " << key;
    }
    // systemd alone brings more than a hundred units of a dozen values each.
    EXPECT_GT(compared, 1000);
}

}  // namespace
