// SPDX-License-Identifier: MIT
#include "cli/events/event_teller.h"

namespace cli {

void EventTeller::Started(Moment at, const Coverage& coverage) {
    Event event = Next("started", at);
    event.coverage = &coverage;
    Tell(event);
}

void EventTeller::File(std::string_view event, Moment at, const ToldFile& file) {
    Event told = Next(event, at);
    told.file = &file;
    Tell(told);
}

void EventTeller::Incomplete(Moment at, const std::vector<std::string>& reasons) {
    Event event = Next("incomplete", at);
    event.reasons = &reasons;
    Tell(event);
}

void EventTeller::Plain(std::string_view event, Moment at) {
    Tell(Next(event, at));
}

}  // namespace cli
