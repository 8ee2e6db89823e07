// SPDX-License-Identifier: MIT
#include "cli/question/parts.h"

#include <algorithm>
#include <iterator>

namespace cli {
namespace {

using Nodes = std::vector<Files::iterator>;
using Compare = OpenedFile::Compare;

/** Less than this is done before a thread for it has begun. */
constexpr size_t kLeastRecords = 1000;

size_t TotalSize(const std::vector<Files>& lists) {
    size_t total = 0;
    for (const Files& list : lists) {
        total += list.size();
    }
    return total;
}

bool AreEven(const std::vector<Files>& lists, size_t total, size_t count) {
    const size_t most = total / count + total / (8 * count);
    return lists.size() == count && std::all_of(lists.begin(), lists.end(), [&](const Files& list) {
               return list.size() <= most;
           });
}

Nodes SortedNodes(Files& list, Compare compare) {
    Nodes nodes;
    nodes.reserve(list.size());
    for (auto node = list.begin(); node != list.end(); ++node) {
        nodes.push_back(node);
    }
    std::stable_sort(nodes.begin(), nodes.end(),
                     [&](Files::iterator a, Files::iterator b) { return compare(*a, *b); });
    return nodes;
}

/** Records that part all sorted lists into about equal shares. */
Nodes Bounds(const std::vector<Nodes>& lists, size_t shares, Compare compare) {
    constexpr size_t kSamples = 64;
    Nodes samples;
    for (const Nodes& nodes : lists) {
        for (size_t i = 0; i < kSamples && !nodes.empty(); ++i) {
            samples.push_back(nodes[nodes.size() * i / kSamples]);
        }
    }
    std::stable_sort(samples.begin(), samples.end(),
                     [&](Files::iterator a, Files::iterator b) { return compare(*a, *b); });
    Nodes bounds;
    for (size_t i = 1; i < shares && !samples.empty(); ++i) {
        bounds.push_back(samples[samples.size() * i / shares]);
    }
    return bounds;
}

/** A sorted list's records, a list a share. */
std::vector<Files> Shares(Files& list, const Nodes& nodes, const Nodes& bounds, Compare compare) {
    std::vector<Files> shares(bounds.size() + 1);
    auto begin = nodes.begin();
    for (size_t i = 0; i < shares.size(); ++i) {
        const auto end = i == bounds.size()
                             ? nodes.end()
                             : std::lower_bound(begin, nodes.end(), bounds[i],
                                                [&](Files::iterator a, Files::iterator b) {
                                                    return compare(*a, *b);
                                                });
        for (; begin != end; ++begin) {
            shares[i].splice(shares[i].end(), list, *begin);
        }
    }
    return shares;
}

/** Equal records stay in the order of the lists. */
Files Merged(std::vector<Files> lists, Compare compare) {
    for (size_t step = 1; step < lists.size(); step *= 2) {
        for (size_t i = 0; i + step < lists.size(); i += 2 * step) {
            lists[i].merge(lists[i + step], compare);
        }
    }
    return std::move(lists.front());
}

}  // namespace

Files Joined(std::vector<Files> lists) {
    Files all;
    for (Files& list : lists) {
        all.splice(all.end(), list);
    }
    return all;
}

std::vector<Files> Spread(std::vector<Files> lists, size_t count) {
    const size_t total = TotalSize(lists);
    count = std::clamp<size_t>(total / kLeastRecords, 1, count);
    if (AreEven(lists, total, count)) {
        return lists;
    }
    Files all = Joined(std::move(lists));
    std::vector<Files> even;
    for (size_t left = count; left > 1; --left) {
        const auto end = std::next(all.begin(), static_cast<long>(all.size() / left));
        even.emplace_back().splice(even.back().end(), all, all.begin(), end);
    }
    even.push_back(std::move(all));
    return even;
}

std::vector<Files> Sorted(std::vector<Files> lists, Column column, const Workers& workers) {
    const Compare compare(std::string(ColumnName(column)), true);
    std::vector<Nodes> nodes(lists.size());
    workers.ForEach(lists.size(), [&](size_t i) { nodes[i] = SortedNodes(lists[i], compare); });
    const Nodes bounds = Bounds(nodes, lists.size(), compare);
    std::vector<std::vector<Files>> shares(lists.size());
    workers.ForEach(lists.size(), [&](size_t i) {
        shares[i] = Shares(lists[i], nodes[i], bounds, compare);
        nodes[i] = Nodes();
    });
    std::vector<Files> sorted(bounds.size() + 1);
    workers.ForEach(sorted.size(), [&](size_t i) {
        std::vector<Files> parts;
        for (std::vector<Files>& of : shares) {
            parts.push_back(std::move(of[i]));
        }
        sorted[i] = Merged(std::move(parts), compare);
    });
    return sorted;
}

}  // namespace cli
