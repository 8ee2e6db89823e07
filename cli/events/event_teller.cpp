// SPDX-License-Identifier: MIT
#include "cli/events/event_teller.h"

namespace cli {

void EventTeller::Started(Moment at, const Coverage& coverage) {
    Event event{++number_, at, "started"};
    event.coverage = &coverage;
    Tell(event);
}

void EventTeller::File(std::string_view event, Moment at, const ToldFile& file) {
    Event told{++number_, at, event};
    told.file = &file;
    Tell(told);
}

void EventTeller::Incomplete(Moment at, const std::vector<std::string>& reasons) {
    Event event{++number_, at, "incomplete"};
    event.reasons = &reasons;
    Tell(event);
}

void EventTeller::Plain(std::string_view event, Moment at) {
    Tell({++number_, at, event});
}

}  // namespace cli
