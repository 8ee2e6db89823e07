// SPDX-License-Identifier: MIT
#include "tests/platform/support/private_root.h"

#include <sched.h>
#include <stdlib.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>

#include "tests/platform/support/end_child.h"

namespace {

namespace fs = std::filesystem;

void Must(bool done, const char* step) {
    if (done) {
        return;
    }
    perror(step);
    _exit(2);
}

void Mount(const char* source, const std::string& target, const char* type, unsigned long flags) {
    fs::create_directories(target);
    Must(mount(source, target.c_str(), type, flags, "") == 0, target.c_str());
}

void BuildRoot(const std::string& root) {
    Must(unshare(CLONE_NEWNS) == 0, "unshare");
    Must(mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) == 0, "private mounts");
    Mount("tmpfs", root, "tmpfs", 0);
    for (const char* shared : {"/usr", "/proc", "/dev"}) {
        Mount(shared, root + shared, "none", MS_BIND | MS_REC);
    }
    for (const char* link : {"bin", "lib", "lib64", "sbin"}) {
        fs::create_symlink(std::string("usr/") + link, root + "/" + link);
    }
    for (const char* folder : {"/etc/samba", "/var/lib/samba", "/run/samba", "/tmp"}) {
        fs::create_directories(root + folder);
    }
    for (const char* volume : {"/volume1", "/volume2"}) {
        Mount("tmpfs", root + volume, "tmpfs", 0);
    }
#ifdef VORN_COVERAGE
    Mount(VORN_COVERAGE_FOLDER, root + VORN_COVERAGE_FOLDER, "none", MS_BIND);  // for its data
#endif
    Must(chroot(root.c_str()) == 0 && chdir("/") == 0, "chroot");
}

[[noreturn]] void RunChild(const std::string& root, const std::function<void()>& body) {
    try {
        BuildRoot(root);
        body();
    } catch (const std::exception& exception) {
        fprintf(stderr, "%s\n", exception.what());
        _exit(3);
    }
    EndChild(testing::Test::HasFailure() ? 1 : 0);
}

}  // namespace

void InPrivateRoot(const std::function<void()>& body) {
    char root[] = "/tmp/vornplatform-root-XXXXXX";
    ASSERT_NE(mkdtemp(root), nullptr);
    fflush(nullptr);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        RunChild(root, body);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "the child's failures stand above";
    rmdir(root);
}

bool CanMount() {
    const pid_t child = fork();
    if (child == 0) {
        _exit(unshare(CLONE_NEWNS) == 0 ? 0 : 1);
    }
    int status = 1;
    return waitpid(child, &status, 0) == child && status == 0;
}

void MakeFolder(const std::string& path) {
    fs::create_directories(path);
}

void WriteFile(const std::string& path, const std::string& text) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}
