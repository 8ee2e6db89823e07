// SPDX-License-Identifier: MIT
#include "cli/question/holders/process_rows.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <algorithm>

#include "cli/host/deleted.h"
#include "cli/text/escape.h"

namespace cli {
namespace {

/** The mark alone doesn't tell: a file may really be named so. */
bool IsDeleted(const std::string& path, const Identity& identity) {
    if (identity.deleted) {
        return *identity.deleted;
    }
    if (WithoutDeletedMark(path).size() == path.size()) {
        return false;
    }
    if (!identity.linked) {
        return true;
    }
    const auto named = IdentityAt(AT_FDCWD, path.c_str());
    return !named || named->inode != identity.inode || named->device != identity.device;
}

}  // namespace

const Holder* ProcessRows::Row(Reason reason) const {
    const auto found = std::find_if(rows_.begin(), rows_.end(),
                                    [&](const Holder& row) { return row.reason == reason; });
    return found == rows_.end() ? nullptr : &*found;
}

bool ProcessRows::WantsName(Reason reason) const {
    return wanted_ == Wanted::kNames || (wanted_ == Wanted::kFirstName && Row(reason) == nullptr);
}

UsedFile ProcessRows::Describe(int descriptor, const Place& place, const Identity& identity,
                               const AskText& askText) const {
    UsedFile file;
    file.descriptor = descriptor;
    const auto text = askText();
    if (text) {
        file.path = targets_.ShownPath(place, identity, *text);
        file.deleted = IsDeleted(file.path, identity);
    }
    return file;
}

void ProcessRows::Take(Reason reason, int descriptor, const Identity& identity,
                       const AskText& askText) {
    // Read once at most: where it lies and how it is shown go by the same name.
    std::optional<std::optional<std::string>> asked;
    const AskText askOnce = [&] {
        if (!asked) {
            asked = askText();
        }
        return *asked;
    };
    const Place place = targets_.PlaceOf(identity, askOnce);
    if (place.kind == Place::kInside) {
        const bool named = WantsName(reason);
        UsedFile file;
        file.descriptor = descriptor;
        Add(reason, named ? Describe(descriptor, place, identity, askOnce) : file);
    } else if (place.kind == Place::kUnknown) {
        TakeByName(reason, descriptor, identity, askOnce().value_or("?"));
    }
}

/**
 * Of a mount that no table has any more, as that of a root which was left behind. Where the same
 * name leads this process to the very same file, it lies where that one does.
 */
void ProcessRows::TakeByName(Reason reason, int descriptor, const Identity& identity,
                             const std::string& text) {
    const auto named = PlaceOfPath(targets_, text);
    const bool same = named && named->identity.inode == identity.inode &&
                      named->identity.device == identity.device;
    if (!same || named->place.kind == Place::kUnknown) {
        LosePlace(reason, text);
    } else if (named->place.kind == Place::kInside) {
        Add(reason, {descriptor, named->path, false});
    }
}

void ProcessRows::LosePlace(Reason reason, const std::string& text) {
    if (std::find(unplaced_.begin(), unplaced_.end(), reason) == unplaced_.end()) {
        unplaced_.push_back(reason);
        Lose(
            fmt::format("process {} has something of the same file system ({}) whose place can't "
                        "be told: {}",
                        pid_, ReasonName(reason), Escaped(text, true)));
    }
}

void ProcessRows::Add(Reason reason, UsedFile file) {
    const bool named = !file.path.empty() || file.descriptor >= 0;
    if (const Holder* known = Row(reason)) {
        auto& row = rows_[static_cast<size_t>(known - rows_.data())];
        named ? row.files.push_back(std::move(file)) : static_cast<void>(++row.unnamed);
        return;
    }
    Holder row;
    row.reason = reason;
    row.pid = pid_;
    row.unnamed = named ? 0 : 1;
    if (named) {
        row.files.push_back(std::move(file));
    }
    rows_.push_back(std::move(row));
}

void ProcessRows::MoveTo(Holders& holders) {
    std::stable_sort(rows_.begin(), rows_.end(),
                     [](const Holder& a, const Holder& b) { return a.reason < b.reason; });
    Append(holders, {std::move(rows_), std::move(lost_), {}});
    rows_.clear();
    lost_.clear();
}

}  // namespace cli
