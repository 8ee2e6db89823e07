// SPDX-License-Identifier: MIT
#include "cli/answer/metrics.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <vector>

#include "cli/question/counts.h"
#include "cli/text/escape.h"

namespace cli {
namespace {

/**
 * Place, service and user as they are shown: what looks alike must be one series. The user is empty
 * where nobody has asked for it.
 */
using Labels = std::array<std::string, 3>;

/** What is told of the files that have labels in common. */
struct Tally {
    size_t files = 0;
    SizeSum sizes;
    SizeSum deleted;

    void Add(const Tally& other) {
        files += other.files;
        sizes.Add(other.sizes);
        deleted.Add(other.deleted);
    }
};
using Series = std::pair<Labels, Tally>;

/** Stands in every label of the series that holds what is beyond the limit. */
constexpr const char* kRest = "(other)";

std::string LabelValue(std::string_view text) {
    std::string value;
    AppendLabelValue(value, text);
    return value;
}

std::vector<Series> Bounded(const std::map<Labels, Tally>& counts) {
    std::vector<Series> series(counts.begin(), counts.end());
    if (series.size() <= kMostSeries) {
        return series;
    }
    std::stable_sort(series.begin(), series.end(), [](const Series& a, const Series& b) {
        return a.second.files > b.second.files;
    });
    Series rest{{kRest, kRest, kRest}, {}};
    for (auto each = series.begin() + kMostSeries - 1; each != series.end(); ++each) {
        rest.second.Add(each->second);
    }
    series.resize(kMostSeries - 1);
    series.push_back(rest);
    return series;
}

void AppendGauge(std::string& out, std::string_view name, std::string_view help) {
    out += fmt::format("# HELP {0} {1}\n# TYPE {0} gauge\n", name, help);
}

std::vector<Series> SeriesOf(const Snapshot& snapshot, const Question& question) {
    std::map<Labels, Tally> tallies;
    for (const FileRecord& file : snapshot.files) {
        Tally& tally = tallies[{LabelValue(PlaceOf(file)), LabelValue(file.process->service),
                                question.asked.connection ? LabelValue(file.process->user) : ""}];
        ++tally.files;
        if (file.facts != nullptr) {
            tally.sizes.Add(*file.facts);
            if (file.deleted) {
                tally.deleted.Add(*file.facts);
            }
        }
    }
    return Bounded(tallies);
}

void AppendSample(std::string& out, std::string_view name, const Question& question,
                  const Labels& labels, std::uint64_t value) {
    out += fmt::format("{}{{{}=\"{}\",service=\"{}\"", name, ByName(question.by), labels[0],
                       labels[1]);
    if (question.asked.connection) {
        out += fmt::format(",user=\"{}\"", labels[2]);
    }
    out += fmt::format("}} {}\n", value);
}

/** Bytes, where anybody has asked for them. */
void AppendSizes(std::string& out, const std::vector<Series>& series, const Question& question,
                 Column column) {
    const std::string name = fmt::format("vorn_openfiles_{}_bytes", ColumnName(column));
    AppendGauge(out, name,
                column == Column::kSize
                    ? "Sizes of the open files, each file once."
                    : "Space that the open files take on the volumes, each file once.");
    for (const auto& [labels, tally] : series) {
        AppendSample(out, name, question, labels, tally.sizes.Of(column));
    }
}

void AppendFiles(std::string& out, const Snapshot& snapshot, const Question& question,
                 const std::vector<Column>& summed) {
    const std::vector<Series> series = SeriesOf(snapshot, question);
    AppendGauge(out, "vorn_openfiles_files", "Files that processes hold open on the volumes.");
    for (const auto& [labels, tally] : series) {
        AppendSample(out, "vorn_openfiles_files", question, labels, tally.files);
    }
    for (const Column column : summed) {
        AppendSizes(out, series, question, column);
    }
    AppendGauge(out, "vorn_openfiles_deleted_space_bytes",
                "Space that deleted files still take, as they are open, each file once.");
    for (const auto& [labels, tally] : series) {
        if (!tally.deleted.IsEmpty()) {
            AppendSample(out, "vorn_openfiles_deleted_space_bytes", question, labels,
                         tally.deleted.Of(Column::kSpace));
        }
    }
}

}  // namespace

void AppendLabelValue(std::string& out, std::string_view text) {
    for (size_t at = 0; at < text.size();) {
        const Utf8Character next = DecodeFirst(text.substr(at));
        if (next.codepoint < 0) {
            out += "\xEF\xBF\xBD";
        } else if (next.codepoint == '\n') {
            out += "\\n";
        } else {
            out.append(next.codepoint == '\\' || next.codepoint == '"' ? 1 : 0, '\\');
            out.append(text, at, next.length);
        }
        at += next.length;
    }
}

std::string MetricsText(const Snapshot& snapshot, const Question& question,
                        const std::vector<Column>& summed, double seconds) {
    std::string out;
    AppendFiles(out, snapshot, question, summed);
    AppendGauge(out, "vorn_openfiles_deleted_files",
                "Files that have been deleted and still take their space, as they are open.");
    out += fmt::format("vorn_openfiles_deleted_files {}\n",
                       std::count_if(snapshot.files.begin(), snapshot.files.end(),
                                     [](const FileRecord& file) { return file.deleted; }));
    AppendGauge(out, "vorn_openfiles_complete", "Whether nothing is missing from the files.");
    out += fmt::format("vorn_openfiles_complete {}\n", snapshot.incompleteReason.empty() ? 1 : 0);
    AppendGauge(out, "vorn_openfiles_enumeration_seconds", "How long finding the files took.");
    out += fmt::format("vorn_openfiles_enumeration_seconds {:.6f}\n", seconds);
    return out;
}

}  // namespace cli
