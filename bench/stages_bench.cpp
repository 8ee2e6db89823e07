// SPDX-License-Identifier: MIT
// Each stage alone, over a platform that answers from memory.

#include <benchmark/benchmark.h>
#include <json/value.h>

#include <algorithm>
#include <string>

#include "bench/memory_platform.h"
#include "vorn/filehandle.h"

using namespace VORN::FileHandle;

namespace {

constexpr int kDescriptors = 250;

using List = std::list<OpenedFile>;

/** A platform with so many descriptors, one share and one hidden directory. */
void Reset(int64_t records) {
    Platform() = {};
    Platform().descriptors = static_cast<int>(std::min<int64_t>(records, kDescriptors));
    Platform().processes = static_cast<int>(records) / Platform().descriptors;
    Platform().shares = {"/volume1/photo"};
    Platform().hidden = {"/.snapshot"};
}

List Scanned(int64_t records) {
    Reset(records);
    List list;
    GetProcOpenedFileInVolume(list);
    return list;
}

List Filtered(int64_t records) {
    List list = Scanned(records);
    FilterPath(list, ENUM_BY_SHARE);
    return list;
}

void Report(benchmark::State& state, List& list) {
    int64_t bytes = 0;
    for (OpenedFile& file : list) {
        bytes += static_cast<int64_t>(file.getFullPath().size());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(list.size()));
    state.SetBytesProcessed(state.iterations() * bytes);
    state.SetComplexityN(state.range(0));
}

/** A stage that can be run again and again on the same list. */
template <typename Stage>
void Measure(benchmark::State& state, List& list, Stage stage) {
    for (auto _ : state) {
        stage(list);
    }
    Report(state, list);
}

std::vector<std::string> Numbered(const std::string& text, int64_t count) {
    std::vector<std::string> texts;
    for (int64_t i = 0; i < count; ++i) {
        texts.push_back(text + std::to_string(i));
    }
    return texts;
}

void Scan(benchmark::State& state) {
    Reset(state.range(0));
    List list;
    for (auto _ : state) {
        list.clear();
        GetProcOpenedFileInVolume(list);
    }
    Report(state, list);
}

void Filter(benchmark::State& state) {
    List list = Scanned(state.range(0));
    Platform().shares = Numbered("/volume1/share", state.range(1) - 1);
    Platform().shares.push_back("/volume1/photo");
    Measure(state, list, [](List& files) { FilterPath(files, ENUM_BY_SHARE); });
}

void Services(benchmark::State& state) {
    List list = Filtered(state.range(0));
    Measure(state, list, GetServiceName);
}

void ServicesWithoutUnitFile(benchmark::State& state) {
    List list = Filtered(state.range(0));
    Platform().hasUnitFile = false;
    Measure(state, list, GetServiceName);
}

void ServicesWithoutName(benchmark::State& state) {
    List list = Filtered(state.range(0));
    Platform().hasNames = false;
    Measure(state, list, GetServiceName);
}

void ConnectionsOf(benchmark::State& state) {
    List list = Filtered(state.range(0));
    GetServiceName(list);
    Platform().connections = static_cast<int>(state.range(1));
    Measure(state, list, UpdateConnectionInfo);
}

void Sort(benchmark::State& state) {
    List unsorted = Filtered(state.range(0));
    unsorted.sort([](OpenedFile& a, OpenedFile& b) {
        return std::hash<std::string>()(a.getFullPath()) <
               std::hash<std::string>()(b.getFullPath());
    });
    for (auto _ : state) {
        state.PauseTiming();
        List list = unsorted;
        state.ResumeTiming();
        VORNSortOpenedFile(list, "path", true);
        state.PauseTiming();
        list.clear();
        state.ResumeTiming();
    }
    Report(state, unsorted);
}

void Deduplicate(benchmark::State& state) {
    List list = Filtered(state.range(0));
    Measure(state, list, EraseAdjacentDuplicates);
}

void Hidden(benchmark::State& state) {
    List list = Filtered(state.range(0));
    Platform().hidden = Numbered("/.hidden", state.range(1));
    Measure(state, list, LabelHidden);
}

void Folders(benchmark::State& state) {
    List list = Filtered(state.range(0));
    Measure(state, list, LabelFolder);
}

void ToJson(benchmark::State& state) {
    List list = Filtered(state.range(0));
    for (auto _ : state) {
        for (OpenedFile& file : list) {
            Json::Value value;
            file.toJson(value);
            benchmark::DoNotOptimize(value);
        }
    }
    Report(state, list);
}

void Whole(benchmark::State& state) {
    Reset(state.range(0));
    Platform().connections = 100;
    List list;
    for (auto _ : state) {
        list.clear();
        EnumOpenedFile(list, ENUM_BY_SHARE);
    }
    Report(state, list);
}

void Records(benchmark::internal::Benchmark* stage) {
    stage->RangeMultiplier(10)->Range(100, 1000000)->Complexity()->Unit(benchmark::kMillisecond);
}

/** So many records, and up to so many texts of the platform. */
template <int64_t kMost, int64_t kLeast = 1>
void RecordsAndTexts(benchmark::internal::Benchmark* stage) {
    for (int64_t texts : {kLeast, int64_t{100}, kMost}) {
        for (int64_t records : {1000, 100000, 1000000}) {
            stage->Args({records, texts});
        }
    }
    stage->Unit(benchmark::kMillisecond);
}

BENCHMARK(Scan)->Apply(Records);
BENCHMARK(Filter)->Apply(RecordsAndTexts<10000>);
BENCHMARK(Services)->Apply(Records);
BENCHMARK(ServicesWithoutUnitFile)->Apply(Records);
BENCHMARK(ServicesWithoutName)->Apply(Records);
BENCHMARK(ConnectionsOf)->Apply(RecordsAndTexts<10000, 0>);
BENCHMARK(Sort)->Apply(Records);
BENCHMARK(Deduplicate)->Apply(Records);
BENCHMARK(Hidden)->Apply(RecordsAndTexts<1000>);
BENCHMARK(Folders)->Apply(Records);
BENCHMARK(ToJson)->Apply(Records);
BENCHMARK(Whole)->Apply(Records);

}  // namespace

BENCHMARK_MAIN();
