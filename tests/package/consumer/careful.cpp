// SPDX-License-Identifier: MIT
// Prints the open files as JSON, one a line. Status: 0 some, 1 none, 2 nobody can tell.
#include <errno.h>
#include <json/json.h>
#include <unistd.h>
#include <vorn/filehandle.h>
#include <vorn/platform/error.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <stdexcept>

namespace fh = VORN::FileHandle;

namespace {

// An exception leaves the rights raised: the group goes back first, as long as the user is root.
void GiveBack(uid_t user, gid_t group) {
    if (setegid(group) != 0 || seteuid(user) != 0) {
        std::abort();
    }
}

std::string Reason(const std::string& what) {
    char code[32];
    std::snprintf(code, sizeof(code), ", error 0x%04X", static_cast<unsigned>(KLIBCErrGet()));
    return what + code;
}

std::list<fh::OpenedFile> OpenFiles() {
    const uid_t user = geteuid();
    const gid_t group = getegid();
    std::list<fh::OpenedFile> files;
    int result = -1;
    try {
        result = fh::VORNEnumOpenedFile(files, fh::ENUM_BY_VOLUME);
    } catch (...) {
        GiveBack(user, group);
        throw;
    }
    if (errno == EPERM) {
        std::abort();  // still root: nothing may go on with that
    }
    if (result != 0) {
        throw std::runtime_error(Reason("no list"));  // what is in it is not what is open
    }
    return files;
}

void Print(fh::OpenedFile& file, bool withTime) {
    Json::Value record;
    file.toJson(record);
    if (withTime) {
        file.timeToJson(record);
    }
    Json::StreamWriterBuilder lines;
    lines["indentation"] = "";
    std::cout << Json::writeString(lines, record) << '\n';
}

}  // namespace

int main() try {
    std::setlocale(LC_ALL, "");  // services have their names in the user's language
    std::list<fh::OpenedFile> files = OpenFiles();
    const size_t count = files.size();
    const bool haveTimes = fh::VORNGetLastAccessTime(files) == 0;  // erases what has no time
    for (fh::OpenedFile& file : files) {
        Print(file, haveTimes);
    }
    if (files.size() < count) {
        std::cerr << count - files.size() << " more are deleted or out of this user's reach\n";
    }
    return std::cout.flush() ? (count != 0 ? 0 : 1) : 2;
} catch (const std::exception& error) {
    std::cerr << "user " << geteuid() << " can't tell what is open: " << error.what() << '\n';
    return 2;
}
