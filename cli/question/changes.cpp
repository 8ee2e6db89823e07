// SPDX-License-Identifier: MIT
#include "cli/question/changes.h"

namespace cli {

Changes LastLook::Compare(Snapshot& snapshot) {
    Changes changes;
    changes.first = first_;
    std::map<Key, Remembered> now;
    for (OpenedFile& file : snapshot.files) {
        Key key(file.getFullPath(), file.getPidStr());
        const Known about = snapshot.About(file);
        const Remembered remembered{file, about.deleted,
                                    about.facts != nullptr ? *about.facts : Facts()};
        if (known_.erase(key) == 0) {
            changes.opened.push_back(remembered);
            changes.fresh.insert(&file);
        }
        now.insert_or_assign(std::move(key), remembered);
    }
    for (auto& [key, remembered] : known_) {
        changes.closed.push_back(std::move(remembered));
    }
    known_ = std::move(now);
    first_ = false;
    return changes;
}

}  // namespace cli
