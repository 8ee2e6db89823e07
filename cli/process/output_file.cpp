// SPDX-License-Identifier: MIT
#include "cli/process/output_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "cli/failure.h"
#include "cli/text/escape.h"
#include "support/descriptor.h"
#include "support/write_all.h"

namespace cli {
namespace {

[[noreturn]] void Fail(const std::string& path, const char* why) {
    throw Failure(fmt::format("can't write '{}': {}", Escaped(path, true), why));
}

[[noreturn]] void Fail(const std::string& path) {
    Fail(path, std::strerror(errno));
}

/** A file beside its destination that is removed unless it took its place. */
class Successor {
public:
    explicit Successor(const std::string& path)
        : path_(path), temporary_(path + ".XXXXXX"), file_(mkostemp(temporary_.data(), O_CLOEXEC)) {
        if (!file_) {
            Fail(path_);
        }
    }
    ~Successor() {
        if (file_) {
            unlink(temporary_.c_str());
        }
    }
    Successor(const Successor&) = delete;
    Successor& operator=(const Successor&) = delete;

    void TakePlace(std::string_view text) {
        // Whoever collects it runs as another user.
        if (!support::WriteAll(file_.Get(), text) || fchmod(file_.Get(), 0644) != 0 ||
            fsync(file_.Get()) != 0 || std::rename(temporary_.c_str(), path_.c_str()) != 0) {
            Fail(path_);
        }
        file_.Reset();
    }

private:
    const std::string path_;
    std::string temporary_;
    support::Descriptor file_;
};

/** Where the links end that a path leads to, whether there is something or not. */
std::string EndOfLinks(const std::string& path) {
    constexpr int kMostLinks = 40;  // as the kernel has it
    std::filesystem::path end(path);
    std::error_code error;
    for (int links = 0; std::filesystem::is_symlink(end, error); ++links) {
        if (links == kMostLinks) {
            Fail(path, std::strerror(ELOOP));
        }
        end = end.parent_path() / std::filesystem::read_symlink(end, error);
        if (error) {
            Fail(path, error.message().c_str());
        }
    }
    return end.string();
}

void WriteInto(const std::string& path, std::string_view text) {
    const support::Descriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    if (!file || !support::WriteAll(file.Get(), text)) {
        Fail(path);
    }
}

}  // namespace

void WriteOutputFile(const std::string& path, std::string_view text) {
    struct stat there {};
    if (stat(path.c_str(), &there) != 0 && errno != ENOENT) {
        Fail(path);
    }
    // Zero where nothing is.
    switch (there.st_mode & S_IFMT) {
        case 0:
        case S_IFREG:
            return Successor(EndOfLinks(path)).TakePlace(text);
        case S_IFIFO:
        case S_IFCHR:
            return WriteInto(path, text);
        case S_IFDIR:
            Fail(path, "it is a folder");
        default:
            Fail(path, "it is neither a file nor a FIFO nor a character device");
    }
}

}  // namespace cli
