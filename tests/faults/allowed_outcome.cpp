// SPDX-License-Identifier: MIT
#include "tests/faults/allowed_outcome.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <sstream>
#include <string_view>
#include <vector>

#include "vorn/filehandle.h"

namespace faults {
namespace {

using Texts = std::vector<std::string>;

constexpr char kShortage[] = "failed 0x0100";
constexpr char kThrown[] = "throws bad_alloc";

/** allocation_faults.sh gives each unit such a name besides its text. */
constexpr char kPlain[] = "plain ";
constexpr char kDefaultService[] = "Internal service";

/** Columns of a file, as operations.cpp writes them. */
enum Column { kPid, kFullPath, kPath, kFilename, kService, kHost, kUser, kTime, kFlags, kColumns };

Texts Split(const std::string& text, char separator) {
    Texts parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) {
        parts.push_back(part);
    }
    return parts;
}

struct Outcome {
    std::string head;
    Texts rows;
};

Outcome Parse(const std::string& text) {
    Texts rows = Split(text, '\n');
    const std::string head = rows.empty() ? "" : rows.front();
    rows.erase(rows.begin(), rows.begin() + (rows.empty() ? 0 : 1));
    return {head, rows};
}

Texts Columns(const std::string& row) {
    Texts columns = Split(row, '\t');
    columns.resize(kColumns);
    return columns;
}

bool Has(const std::string& log, const std::string& text) {
    return log.find(text) != std::string::npos;
}

/** The name of a service, or what stands in for one that could not be found out. */
bool IsService(const std::string& service, const std::string& good) {
    return service == good || service == kPlain + good || service == kDefaultService;
}

/** A row of a whole enumeration: the good one, or one whose service or client is not known. */
bool IsWholeRow(const std::string& row, const std::string& good) {
    const Texts columns = Columns(row);
    Texts expected = Columns(good);
    if (IsService(columns[kService], expected[kService])) {
        expected[kService] = columns[kService];
    }
    if (columns[kHost] == "-" && columns[kUser] == "-") {
        expected[kHost] = expected[kUser] = "-";
    }
    return columns == expected;
}

/** A row of an enumeration that ended early: what is not there yet is empty. */
bool IsUnfinishedRow(const std::string& row, const std::string& good) {
    Texts columns = Columns(row);
    const Texts expected = Columns(good);
    for (const int column : {kPath, kFilename, kService, kHost, kUser, kTime, kFlags}) {
        const auto at = static_cast<size_t>(column);
        columns[at] = columns[at].empty() ? expected[at] : columns[at];
    }
    std::string filled;
    for (const std::string& column : columns) {
        filled += column + '\t';
    }
    return IsWholeRow(filled, good);
}

/**
 * Takes the good rows that are there and returns those that are missing. In another order, or with
 * a row that is no good one, it ends with the text of that row.
 */
template <typename IsRow>
std::string Missing(const Texts& rows, const Texts& good, const IsRow& isRow, Texts& missing) {
    auto next = rows.begin();
    for (const std::string& expected : good) {
        if (next != rows.end() && isRow(*next, expected)) {
            ++next;
        } else {
            missing.push_back(expected);
        }
    }
    return next == rows.end() ? "" : "row: " + *next;
}

/** A file is left out with its process, or with the share that could not be stored. */
bool IsMissingFileLogged(const std::string& row, const std::string& log) {
    return Has(log, "<7> filehandle_get_proc_opened_file:64 Fail to enum /proc/" +
                        Columns(row)[kPid] + "/fd/, vornerr=[0x0100]\n") ||
           Has(log, "Out of memory: a text is left out of its list\n");
}

/** Whether a stage and the driver say that the enumeration ended there, and why. */
bool IsEarlyEndLogged(const std::string& log) {
    constexpr std::string_view kEnds[][2] = {
        {"get_proc_opened_file:30 Out of Memory", "enum:24 Failed to get proc opened file"},
        {"get_proc_opened_file:39 Out of Memory", "enum:24 Failed to get proc opened file"},
        {"get_proc_opened_file:48 Fail to enum /proc, vornerr=[0x0100]",
         "enum:24 Failed to get proc opened file"},
        {"filter_path:129 Failed to allocate list, vornerr=[0x0100]",
         "enum:29 Failed to filter path"},
        {"filter_path:139 Failed to get share path list, vornerr=[0x0100]",
         "enum:29 Failed to filter path"},
        {"filter_path:144 Failed to get volume path list, vornerr=[0x0100]",
         "enum:29 Failed to filter path"},
        {"get_connnection_info:178 Failed to get current connection info",
         "enum:39 Failed to update connection info"},
        {"label_hidden:20 Failed to allocate list", "enum:51 Failed to label hidden"},
        {"label_hidden:31 Failed to get hidden dir", "enum:51 Failed to label hidden"},
    };
    return std::any_of(std::begin(kEnds), std::end(kEnds), [&](const auto& end) {
        const size_t stage = log.find("<3> filehandle_" + std::string(end[0]));
        return stage != std::string::npos &&
               log.find("<3> filehandle_" + std::string(end[1]), stage) != std::string::npos;
    });
}

/** The same for rows that were not sorted yet: each good row finds its own, wherever that is. */
std::string MissingUnsorted(Texts rows, const Texts& good, Texts& missing) {
    for (const std::string& expected : good) {
        const auto row = std::find_if(rows.begin(), rows.end(), [&](const std::string& it) {
            return IsUnfinishedRow(it, expected);
        });
        if (row != rows.end()) {
            rows.erase(row);
        } else {
            missing.push_back(expected);
        }
    }
    return rows.empty() ? "" : "row: " + rows.front();
}

std::string InEnumeration(const Outcome& good, const Outcome& outcome, const std::string& log) {
    const bool fails = outcome.head == kShortage;
    const bool throws = outcome.head == kThrown;
    if (outcome.head != "ok" && !fails && !throws) {
        return outcome.head;
    }
    Texts missing;
    std::string wrong = fails || throws ? MissingUnsorted(outcome.rows, good.rows, missing)
                                        : Missing(outcome.rows, good.rows, IsWholeRow, missing);
    if (fails && !IsEarlyEndLogged(log)) {
        return "no log line for the failure";
    }
    // A scan that does not come to its end has what it came to.
    const bool endsInScan = throws || Has(log, "<3> filehandle_enum:24 ");
    for (const std::string& row : missing) {
        if (!endsInScan && !IsMissingFileLogged(row, log)) {
            return "no log line for the missing row " + row;
        }
    }
    return wrong;
}

std::string InTimes(const Outcome& good, const Outcome& outcome, const std::string& log) {
    Texts missing;
    const bool whole = outcome.head == "ok";
    if (!whole && outcome.head != kShortage && outcome.head != kThrown) {
        return outcome.head;
    }
    std::string wrong =
        Missing(outcome.rows, good.rows, whole ? IsWholeRow : IsUnfinishedRow, missing);
    if (outcome.head == kShortage && !Has(log, "<3> filehandle_get_atime:46 ")) {
        return "no log line for the failure";
    }
    for (const std::string& row : missing) {
        if (!Has(log, "<3> filehandle_get_atime:41 Failed to stat file [" +
                          Columns(row)[kFullPath] + "]")) {
            return "no log line for the missing row " + row;
        }
    }
    return wrong;
}

std::string InServices(const Outcome& good, const Outcome& outcome, const std::string& log) {
    if (outcome.head != "ok") {
        return outcome.head == kThrown ? "" : outcome.head;
    }
    Texts missing;
    const auto isRow = [](const std::string& row, const std::string& expected) {
        return row == expected || row == kPlain + expected;
    };
    std::string wrong = Missing(outcome.rows, good.rows, isRow, missing);
    for (const std::string& row : missing) {
        const auto at = std::find(good.rows.begin(), good.rows.end(), row) - good.rows.begin();
        const std::string unit = VORN::FileHandle::gszKickableServiceTable[at];
        if (!Has(log,
                 "<3> filehandle_get_kickable_service_list:47 Get kickable service list "
                 "error. service:[" +
                     unit + "]\n")) {
            return "no log line for the missing " + unit;
        }
    }
    return wrong;
}

}  // namespace

std::string WhatIsWrong(const Operation& operation, const std::string& good,
                        const std::string& outcome, const std::string& log) {
    if (outcome == good) {
        return "";
    }
    switch (operation.kind) {
        case Kind::kC:
            return outcome == kShortage ? "" : outcome;
        case Kind::kThrows:
            return outcome == kThrown ? "" : outcome;
        case Kind::kFiles:
            return InEnumeration(Parse(good), Parse(outcome), log);
        case Kind::kTimes:
            return InTimes(Parse(good), Parse(outcome), log);
        default:
            return InServices(Parse(good), Parse(outcome), log);
    }
}

}  // namespace faults
