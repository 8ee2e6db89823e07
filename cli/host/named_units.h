// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_NAMED_UNITS_H
#define VORN_CLI_HOST_NAMED_UNITS_H

#include <map>
#include <string>
#include <vector>

namespace cli {

/** Units whose files name a service (section X-Vornalis), where the library looks for them. */
std::vector<std::string> NamedUnits();

/** The name that a unit is shown by, in the language of the environment; empty without one. */
std::string DisplayName(const std::string& unit);

/**
 * The names, as they are shown, of the services that a text means: by its unit, with or without
 * its type ("SMBService"), or by the name that it has in English. None for another text.
 */
std::vector<std::string> ServicesMeantBy(const std::string& text);

/** English names of services by those that they are shown by, where these differ. */
std::map<std::string, std::string> EnglishServiceNames();

/** Lets everything be named in English while it lives. One at a time, with one thread. */
class InEnglish {
public:
    InEnglish();
    ~InEnglish();
    InEnglish(const InEnglish&) = delete;
    InEnglish& operator=(const InEnglish&) = delete;

private:
    bool wasSet_;
    std::string before_;
};

}  // namespace cli

#endif
