// SPDX-License-Identifier: MIT
#include "cli/question/parts.h"

#include <algorithm>
#include <iterator>

namespace cli {
namespace {

/** Less than this is done before a thread for it has begun. */
constexpr size_t kLeastRecords = 1000;

/** The first records of a list in parts of about the same size. */
class Parts {
public:
    Parts(Files& files, size_t records, const Workers& workers)
        : begin_(files.begin()),
          records_(records),
          count_(std::clamp<size_t>(records / kLeastRecords, 1, workers.Count())) {}

    size_t Count() const { return count_; }
    FilePlace Begin(size_t part) const {
        return begin_ + static_cast<std::ptrdiff_t>(records_ * part / count_);
    }
    FilePlace End(size_t part) const { return Begin(part + 1); }

private:
    FilePlace begin_;
    size_t records_;
    size_t count_;
};

/** A record with the bytes that mostly tell its path from others. */
struct Key {
    std::uint64_t bytes;
    const FileRecord* file;
};
using Keys = std::vector<Key>;

bool IsBefore(const Key& a, const Key& b) {
    if (a.bytes != b.bytes) {
        return a.bytes < b.bytes;
    }
    const int order = a.file->path.compare(b.file->path);
    return order != 0 ? order < 0 : a.file->process->pid < b.file->process->pid;
}

bool IsDuplicate(const Key& a, const Key& b) {
    return a.file->fullPath == b.file->fullPath && a.file->process->pid == b.file->process->pid;
}

/** How much the paths of some records have in common at their beginning with the first of all. */
size_t CommonBytes(FilePlace begin, FilePlace end, std::string_view first) {
    size_t common = first.size();
    for (; begin != end; ++begin) {
        const std::string_view path = begin->path.substr(0, common);
        common = static_cast<size_t>(std::mismatch(path.begin(), path.end(), first.begin()).first -
                                     path.begin());
    }
    return common;
}

/** Bytes behind those in common, as a number of the same order. No path has a zero byte. */
std::uint64_t BytesBehind(std::string_view path, size_t common) {
    std::uint64_t number = 0;
    for (size_t at = common; at < common + sizeof(number); ++at) {
        number = number << 8 | (at < path.size() ? static_cast<unsigned char>(path[at]) : 0U);
    }
    return number;
}

Keys SortedKeys(FilePlace begin, FilePlace end, size_t common) {
    Keys keys;
    keys.reserve(static_cast<size_t>(end - begin));
    for (; begin != end; ++begin) {
        keys.push_back({BytesBehind(begin->path, common), &*begin});
    }
    std::stable_sort(keys.begin(), keys.end(), IsBefore);
    return keys;
}

/** Keys that part all sorted lists into about equal shares. */
Keys Bounds(const std::vector<Keys>& lists) {
    constexpr size_t kSamples = 64;
    Keys samples;
    for (const Keys& keys : lists) {
        for (size_t i = 0; i < kSamples && !keys.empty(); ++i) {
            samples.push_back(keys[keys.size() * i / kSamples]);
        }
    }
    std::stable_sort(samples.begin(), samples.end(), IsBefore);
    Keys bounds;
    for (size_t i = 1; i < lists.size(); ++i) {
        bounds.push_back(samples[samples.size() * i / lists.size()]);
    }
    return bounds;
}

/** One share of all lists; equal keys stay in the order of the lists. */
Keys MergedShare(const std::vector<Keys>& lists, const Keys& bounds, size_t share) {
    Keys merged;
    for (const Keys& keys : lists) {
        const auto bound = [&](size_t number) {
            return std::lower_bound(keys.begin(), keys.end(), bounds[number], IsBefore);
        };
        const auto begin = share == 0 ? keys.begin() : bound(share - 1);
        const auto end = share == bounds.size() ? keys.end() : bound(share);
        const auto middle = static_cast<std::ptrdiff_t>(merged.size());
        merged.insert(merged.end(), begin, end);
        std::inplace_merge(merged.begin(), merged.begin() + middle, merged.end(), IsBefore);
    }
    merged.erase(std::unique(merged.begin(), merged.end(), IsDuplicate), merged.end());
    return merged;
}

/** The keys' records in the order of the shares. */
Files InOrder(const std::vector<Keys>& shares, const Workers& workers) {
    std::vector<size_t> begins = {0};
    for (const Keys& keys : shares) {
        begins.push_back(begins.back() + keys.size());
    }
    Files ordered(begins.back());
    workers.ForEach(shares.size(), [&](size_t share) {
        std::transform(shares[share].begin(), shares[share].end(),
                       ordered.begin() + static_cast<std::ptrdiff_t>(begins[share]),
                       [](const Key& key) { return *key.file; });
    });
    return ordered;
}

}  // namespace

Files Joined(std::vector<Files> lists) {
    Files all = lists.empty() ? Files() : std::move(lists.front());
    size_t total = all.size();
    for (size_t i = 1; i < lists.size(); ++i) {
        total += lists[i].size();
    }
    all.reserve(total);
    for (size_t i = 1; i < lists.size(); ++i) {
        const Files list = std::move(lists[i]);
        all.insert(all.end(), list.begin(), list.end());
    }
    return all;
}

void GoOver(Files& files, size_t count, TextsOfThreads& texts, const Workers& workers,
            const PartStep& step) {
    const Parts parts(files, count, workers);
    std::vector<FilePlace> ends(parts.Count());
    workers.ForEach(parts.Count(), [&](size_t part) {
        ends[part] = step(parts.Begin(part), parts.End(part), texts[part]);
    });
    FilePlace end = files.begin();
    for (size_t part = 0; part < parts.Count(); ++part) {
        const FilePlace begin = parts.Begin(part);
        end = begin == end ? ends[part] : std::copy(begin, ends[part], end);
    }
    files.erase(end, files.begin() + static_cast<std::ptrdiff_t>(count));
}

void SortAndUnify(Files& files, const Workers& workers) {
    if (files.empty()) {
        return;
    }
    const Parts parts(files, files.size(), workers);
    std::vector<size_t> commons(parts.Count());
    workers.ForEach(parts.Count(), [&](size_t part) {
        commons[part] = CommonBytes(parts.Begin(part), parts.End(part), files.front().path);
    });
    const size_t common = *std::min_element(commons.begin(), commons.end());
    std::vector<Keys> lists(parts.Count());
    workers.ForEach(parts.Count(), [&](size_t part) {
        lists[part] = SortedKeys(parts.Begin(part), parts.End(part), common);
    });
    const Keys bounds = Bounds(lists);
    std::vector<Keys> shares(parts.Count());
    workers.ForEach(parts.Count(),
                    [&](size_t share) { shares[share] = MergedShare(lists, bounds, share); });
    lists.clear();
    files = InOrder(shares, workers);
}

}  // namespace cli
