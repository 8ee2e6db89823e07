// SPDX-License-Identifier: MIT
#include <algorithm>
#include <map>
#include <random>

#include "tests/unit/support/connection_test.h"

namespace {

using unit::ScriptedPlatform;

struct Entry {
    int pid;
    bool isSsh;
};

/**
 * The rule told again with nothing but whole copies and plain maps: who may know what is all that
 * a walk leaves behind.
 */
struct Model {
    explicit Model(const ScriptedPlatform& platform) : host(platform) {
        for (const ScriptedPlatform::Connection& connection : host.connections) {
            const int pid = static_cast<int>(connection.pid);
            owner[pid] = connection.host + " " + connection.user;
            if (connection.type == 10) {
                stopOf[pid] = pid;
            }
        }
    }

    std::string Answer(const Entry& entry) {
        if (owner.count(entry.pid) != 0) {
            return owner[entry.pid];
        }
        if (!entry.isSsh) {
            return "- -";
        }
        const std::vector<int> chain = Chain(entry.pid);
        const int stop = chain.back();
        for (size_t i = 0; i + 1 < chain.size(); ++i) {
            stopOf[chain[i]] = stop;
        }
        if (stop == 0 || stopOf[stop] == 0 || owner.count(stopOf[stop]) == 0) {
            strays += stop != 0 && stopOf[stop] != 0 ? 1 : 0;
            return "- -";
        }
        return owner[entry.pid] = owner[stopOf[stop]];
    }

    /** Those passed through, and the stop behind them. */
    std::vector<int> Chain(int pid) {
        if (stopOf.count(pid) != 0) {
            return {pid};
        }
        lookups.push_back(pid);
        const auto process = host.processes.find(pid);
        if (process == host.processes.end() || process->second.result < 0 ||
            !process->second.givesRecord || process->second.ppid <= 1) {
            return {0};
        }
        std::vector<int> chain = Chain(process->second.ppid);
        chain.insert(chain.begin(), pid);
        return chain;
    }

    const ScriptedPlatform& host;
    std::map<int, std::string> owner;
    std::map<int, int> stopOf;
    std::vector<int> lookups;
    int strays = 0; /**< ends at a process without a connection */
};

}  // namespace

class RandomHost : public unit::ConnectionTest {
protected:
    int Below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random); }

    /** Pids 2 to 41; parents are smaller, so that there is no ring. */
    void Fill() {
        platform.processes.clear();
        platform.connections.clear();
        for (int pid = 2; pid < 42; ++pid) {
            if (Below(20) != 0) {
                const int parent = Below(4) == 0 ? Below(pid) : std::max(pid - 1 - Below(5), 0);
                platform.processes[pid] = {parent, Below(30) == 0 ? -1 : Below(2), Below(30) != 0};
            }
        }
        for (int i = Below(6); i > 0; --i) {
            platform.connections.push_back({static_cast<uint32_t>(Below(42)),
                                            "host" + std::to_string(i), "user" + std::to_string(i),
                                            Below(3) == 0 ? kSmb : kSsh});
        }
    }
    std::vector<Entry> RandomEntries() {
        std::vector<Entry> entries(static_cast<size_t>(Below(40)));
        for (Entry& entry : entries) {
            entry = {Below(44), Below(6) != 0};
        }
        return entries;
    }

    std::mt19937 random{20240517};
};

TEST_F(RandomHost, IsAnsweredAsThePlainModelAnswers) {
    size_t hits = 0;
    int strays = 0;
    for (int round = 0; round < 3000 && !HasFailure(); ++round) {
        Fill();
        const std::vector<Entry> entries = RandomEntries();
        Model model(platform);
        std::vector<std::pair<std::string, std::string>> texts;
        std::vector<std::string> expected;
        for (const Entry& entry : entries) {
            texts.emplace_back(std::to_string(entry.pid), entry.isSsh ? "SSH" : "SMB");
            expected.push_back(model.Answer(entry));
            hits += expected.back() != "- -" ? 1 : 0;
        }
        strays += model.strays;
        SetEntries(texts);
        EXPECT_EQ(Run(), expected) << "round " << round;
        EXPECT_EQ(Lookups(), model.lookups) << "round " << round;
        EXPECT_EQ(BlocksFreed(), platform.connections.empty() ? 0U : 1U);
    }
    EXPECT_GT(hits, 5000U);
    EXPECT_GT(strays, 10);
}
