// SPDX-License-Identifier: MIT
#include "cli/answer/typed_values.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "cli/question/facts_text.h"
#include "cli/text/json_text.h"
#include "cli/text/number_text.h"

namespace cli {
namespace {

constexpr const char* kNull = "null";

std::string Moment(const FileRecord& file, Column column) {
    const auto moments = ColumnNumbers(file, column);
    return moments.empty() ? kNull : fmt::format("\"{}\"", UtcTime(moments.front()));
}

void AppendWaiters(std::string& out, const std::vector<LockWaiter>& waiters) {
    const char* separator = "{";
    for (const LockWaiter& waiter : waiters) {
        out += fmt::format("{}\"pid\":{},", separator, waiter.pid);
        AppendJsonOptional(out, "command", waiter.command);
        out += '}';
        separator = ",{";
    }
}

std::string Locks(const std::vector<HeldLock>& locks) {
    std::string out = "[";
    const char* separator = "";
    for (const HeldLock& held : locks) {
        out += fmt::format("{}{{\"kind\":\"{}\",\"access\":\"{}\",\"begin\":{},\"end\":{},",
                           separator, LockKind(held.lock), LockAccess(held.lock), held.lock.begin,
                           held.lock.end ? std::to_string(*held.lock.end) : kNull);
        out += "\"awaited_by\":[";
        AppendWaiters(out, held.waiters);
        out += "]}";
        separator = ",";
    }
    return out + ']';
}

/** What belongs to Facts and is a list. */
std::string List(const Facts* facts, Column column) {
    if (facts == nullptr || !facts->process) {
        return kNull;
    }
    switch (column) {
        case Column::kFd:
            return fmt::format("[{}]", fmt::join(facts->descriptors, ","));
        case Column::kMode: {
            // Letters alone, but for what may only be named.
            const std::string modes = fmt::format("{}", fmt::join(facts->modes, "\",\""));
            return modes.empty() ? "[]" : "[\"" + modes + "\"]";
        }
        default:
            return Locks(facts->locks);
    }
}

}  // namespace

Kind TypedKind(Column column) {
    switch (column) {
        case Column::kService:
        case Column::kPath:
        case Column::kFilename:
        case Column::kFullPath:
        case Column::kShare:
            return Kind::kText;
        case Column::kUser:
        case Column::kHost:
        case Column::kCommand:
        case Column::kOwner:
        case Column::kLogin:
        case Column::kUnit:
        case Column::kDevice:
            return Kind::kOptional;
        case Column::kHidden:
        case Column::kFolder:
        case Column::kDeleted:
            return Kind::kFlag;
        case Column::kPid:
        case Column::kSize:
        case Column::kSpace:
        case Column::kInode:
            return Kind::kNumber;
        default:
            return Kind::kJson;
    }
}

std::string TypedValue(const FileRecord& file, Column column) {
    return MeasureOf(column) == Measure::kTime ? Moment(file, column) : List(file.facts, column);
}

}  // namespace cli
