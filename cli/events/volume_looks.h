// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_VOLUME_LOOKS_H
#define VORN_CLI_EVENTS_VOLUME_LOOKS_H

#include <functional>
#include <string>
#include <vector>

#include "cli/events/event_teller.h"
#include "cli/question/open_files.h"

namespace cli {

/** What looks at the list of open files find: all of it once, of some volumes again and again. */
class VolumeLooks {
public:
    /** Called now and then, as there may be many; false when it is to end. */
    using Flush = std::function<bool()>;

    /**
     * @param paths     what is told of: at or below one of them
     * @param lookedAt  the volumes that the kernel doesn't tell of
     */
    VolumeLooks(std::vector<std::string> paths, const Coverage& coverage, EventTeller& teller,
                Flush flush);

    /**
     * Tells what is open, wherever that is, and from then on what has opened and closed on the
     * volumes that are looked at.
     *
     * @return false when it is to end
     */
    bool Look();

    /** No further look tells anything. */
    bool IsOver() const { return toldFirst_ && coverage_.lookedAt.empty(); }

private:
    void KeepWanted(Snapshot& look) const;
    bool TellAll(Snapshot look);
    bool TellWatched(Snapshot& look);
    bool TellChanges();
    bool Tell(std::string_view event, const FileRecord& file, bool initial);
    void TellLacks(std::vector<std::string> reasons);
    std::string_view VolumeOf(std::string_view path) const;

    const std::vector<std::string> paths_;
    const Coverage& coverage_;
    EventTeller& teller_;
    const Flush flush_;
    OpenFiles files_;
    std::vector<std::string> lacks_; /**< as they were told last */
    bool toldFirst_ = false;
    Moment at_ = 0; /**< of the look */
    size_t told_ = 0;
};

}  // namespace cli

#endif
