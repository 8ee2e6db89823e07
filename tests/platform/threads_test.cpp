// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/support/lost_sources.h"
#include "platform/linux/support/run_program.h"
#include "support/owner.h"
#include "tests/platform/support/child.h"
#include "tests/platform/support/private_network.h"
#include "tests/platform/support/private_root.h"
#include "tests/platform/support/serving.h"
#include "tests/platform/support/temp_folder.h"
#include "vorn/platform/connection.h"
#include "vorn/platform/error.h"
#include "vorn/platform/finding.h"
#include "vorn/platform/process.h"
#include "vorn/platform/share.h"
#include "vorn/platform/string_bundle.h"
#include "vorn/platform/volume.h"

/**
 * @file
 * What the stand-in remembers, from several threads at once: shares, sessions of SMB servers, the
 * records that belong to a thread. To be run under ThreadSanitizer as well; without it the answers
 * themselves are held against each other.
 */

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 25;

/** Runs a part in several threads, several times in each. */
template <typename Part>
void InThreads(const Part& part) {
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&part, i] {
            for (int round = 0; round < kRounds; ++round) {
                part(i);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

std::vector<std::string> Shares() {
    KLIBC_SZLIST* list = KLIBCSzListAlloc(512);
    const int count = VORNShareEnum(&list, VORN_SHARE_ALL);
    const support::Owner<KLIBC_SZLIST, KLIBCSzListFree> owner(list);
    std::vector<std::string> shares;
    for (int i = 0; i < count; ++i) {
        const std::string name = KLIBCSzListGet(list, i);
        VORN_SHARE* share = nullptr;
        if (VORNShareGet(name.c_str(), &share) < 0) {
            return {"no share " + name};
        }
        shares.push_back(name + " " + share->szPath);
    }
    return shares;
}

std::vector<std::string> Volumes() {
    std::vector<std::string> volumes;
    const VORN_MOUNT_VOL_INFO* volume = VORNMountVolAllEnum(0, 3, 2);
    for (; volume != nullptr; volume = volume->pNext) {
        volumes.emplace_back(volume->szMountPath);
    }
    return volumes;
}

constexpr char kSmbStatus[] = "/usr/bin/smbstatus";

constexpr char kOneSession[] =
    R"({"sessions": {"1": {"server_id": {"pid": "%d"}, "uid": 5001, "username": "alice"}}})";

/** Puts a program in smbstatus's place that knows one session. */
void AnswerAsSmbStatus(pid_t server) {
    const std::string script = std::string("printf '") + kOneSession + "' ";
    WriteFile("/tmp/smbstatus", "#!/bin/sh\n" + script + std::to_string(server) + "\n");
    ASSERT_EQ(chmod("/tmp/smbstatus", 0755), 0);
    ASSERT_EQ(mount("/tmp/smbstatus", kSmbStatus, "none", MS_BIND, ""), 0);
}

}  // namespace

TEST(Threads, ShareWhatIsRememberedOfShares) {
    const std::vector<std::string> shares = Shares();
    const std::vector<std::string> volumes = Volumes();
    InThreads([&](int) {
        EXPECT_EQ(Shares(), shares);
        EXPECT_EQ(Volumes(), volumes);
    });
}

TEST(Threads, HaveAnErrorCodeEach) {
    InThreads([](int thread) {
        KLIBCErrSetEx(0x1000 + thread, "test", 1);
        std::this_thread::yield();
        EXPECT_EQ(KLIBCErrGet(), 0x1000 + thread);
        KLIBC_PROC* process = nullptr;
        ASSERT_EQ(KLIBCProcGetByPid(getpid(), &process), 0);
        EXPECT_EQ(process->ppid, getppid());
        KLIBCProcFree(process);
    });
}

TEST(Threads, AskForConnectionsAtOnce) {
    InThreads([](int) {
        VORN_CURCONN* connections = nullptr;
        EXPECT_GE(VORNCurConnGet(&connections), 0);
        std::free(connections);
    });
}

TEST(Threads, ShareWhatIsRememberedOfSmbUsers) {
    SKIP_WITHOUT_MOUNTS();
    if (access(kSmbStatus, X_OK) != 0) {
        GTEST_SKIP() << "needs smbstatus (package samba)";
    }
    InPrivateRoot([] {
        InPrivateNetwork([] {
            const TempFolder folder;
            const Listener listener("127.0.0.1");
            ServedClient client(listener, "127.0.0.2");
            const std::string program = MakeServer(folder, "smbd");
            const Child server([&] { BecomeServer(program, client.Server().Get(), 40); });
            client.Server().Reset();
            AnswerAsSmbStatus(server.Pid());
            InThreads([&](int) {
                EXPECT_EQ(SeenOf(server.Pid()), (List{{"127.0.0.2", "alice"}}));
            });
        });
    });
}

TEST(Threads, AskWhatAnswersLackAtOnce) {
    InThreads([](int thread) {
        vornplatform::NoteLost(vornplatform::Source::kSockets, std::to_string(thread), "");
        VORN_FINDING* findings = nullptr;
        EXPECT_GE(VORNFindingGet(VORN_FINDINGS_OF_ANSWERS, &findings), 0);
        std::free(findings);
        vornplatform::NoteWell(vornplatform::Source::kSockets);
    });
}

TEST(Threads, OpenBundlesAtOnce) {
    InThreads([](int) {
        StringBundle bundle("service", nullptr, nullptr, nullptr, nullptr, nullptr);
        EXPECT_STRNE(bundle.Text("internal_service", ""), "");
    });
}

TEST(Threads, RunProgramsAtOnceAndCollectTheirOwn) {
    InThreads([](int thread) {
        const std::string text = std::to_string(thread);
        const auto result =
            vornplatform::RunProgram({"/bin/echo", text}, {std::chrono::seconds(60), 100});
        EXPECT_EQ(result.end, vornplatform::ProgramEnd::kExited);
        EXPECT_EQ(result.output, text + "\n");
    });
}
