#include "cli/answer/metrics.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <vector>

#include "cli/text/escape.h"

namespace cli {
namespace {

/** Place, service and user as they are shown: what looks alike must be one series. */
using Labels = std::array<std::string, 3>;
using Series = std::pair<Labels, size_t>;

/** Stands in every label of the series that holds what is beyond the limit. */
constexpr const char* kRest = "(other)";

std::string LabelValue(std::string_view text) {
    std::string value;
    AppendLabelValue(value, text);
    return value;
}

std::vector<Series> Bounded(const std::map<Labels, size_t>& counts) {
    std::vector<Series> series(counts.begin(), counts.end());
    if (series.size() <= kMostSeries) {
        return series;
    }
    std::stable_sort(series.begin(), series.end(),
                     [](const Series& a, const Series& b) { return a.second > b.second; });
    Series rest{{kRest, kRest, kRest}, 0};
    for (auto each = series.begin() + kMostSeries - 1; each != series.end(); ++each) {
        rest.second += each->second;
    }
    series.resize(kMostSeries - 1);
    series.push_back(rest);
    return series;
}

void AppendGauge(std::string& out, std::string_view name, std::string_view help) {
    fmt::format_to(std::back_inserter(out), "# HELP {0} {1}\n# TYPE {0} gauge\n", name, help);
}

void AppendFiles(std::string& out, Snapshot& snapshot, const Question& question) {
    std::map<Labels, size_t> counts;
    for (OpenedFile& file : snapshot.files) {
        ++counts[{LabelValue(PlaceOf(file, question.by)), LabelValue(file.getService()),
                  LabelValue(file.getUser())}];
    }
    AppendGauge(out, "vorn_openfiles_files", "Files that processes hold open on the volumes.");
    for (const auto& [labels, files] : Bounded(counts)) {
        fmt::format_to(std::back_inserter(out),
                       "vorn_openfiles_files{{{}=\"{}\",service=\"{}\",user=\"{}\"}} {}\n",
                       ByName(question), labels[0], labels[1], labels[2], files);
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

std::string PlaceOf(OpenedFile& file, VORN::FileHandle::ENUM_BY by) {
    const std::string path = file.getPath();
    // "photo/2024/a.jpg" by share, "/volume1/photo/2024/a.jpg" by volume.
    return path.substr(0, path.find('/', by == VORN::FileHandle::ENUM_BY_VOLUME ? 1 : 0));
}

std::string MetricsText(Snapshot& snapshot, const Question& question, double seconds) {
    std::string out;
    AppendFiles(out, snapshot, question);
    AppendGauge(out, "vorn_openfiles_deleted_files",
                "Files that have been deleted and still take their space, as they are open.");
    fmt::format_to(std::back_inserter(out), "vorn_openfiles_deleted_files {}\n",
                   snapshot.deleted.size());
    AppendGauge(out, "vorn_openfiles_complete", "Whether every process could be examined.");
    fmt::format_to(std::back_inserter(out), "vorn_openfiles_complete {}\n",
                   snapshot.incompleteReason.empty() ? 1 : 0);
    AppendGauge(out, "vorn_openfiles_enumeration_seconds", "How long finding the files took.");
    fmt::format_to(std::back_inserter(out), "vorn_openfiles_enumeration_seconds {:.6f}\n", seconds);
    return out;
}

}  // namespace cli
