// SPDX-License-Identifier: MIT
#include "cli/process/terminal.h"

#include <langinfo.h>
#include <locale.h>
#include <strings.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string_view>

#include "support/numbers.h"

namespace cli {
namespace {

std::string_view Environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

size_t PositiveOr(std::string_view text, size_t otherwise) {
    const size_t value = support::ParseNumber<size_t>(text).value_or(0);
    return value > 0 ? value : otherwise;
}

/** The codeset that a locale's name carries, such as UTF-8 in "de_DE.UTF-8@euro". */
bool NamesUtf8(std::string_view locale) {
    const size_t dot = locale.find('.');
    if (dot == std::string_view::npos) {
        return false;
    }
    const std::string_view codeset = locale.substr(dot + 1, locale.find('@') - dot - 1);
    const auto is = [&](const char* name) {
        return codeset.size() == std::strlen(name) &&
               strncasecmp(codeset.data(), name, codeset.size()) == 0;
    };
    return is("UTF-8") || is("UTF8");
}

bool LocaleIsUtf8() {
    // Not setlocale(): texts are compared byte by byte whatever the locale.
    const locale_t locale = newlocale(LC_CTYPE_MASK, "", nullptr);
    if (locale != nullptr) {
        const bool utf8 = std::strcmp(nl_langinfo_l(CODESET, locale), "UTF-8") == 0;
        freelocale(locale);
        return utf8;
    }
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        if (!Environment(name).empty()) {
            return NamesUtf8(Environment(name));
        }
    }
    return false;
}

}  // namespace

Terminal DescribeTerminal(int fd) {
    Terminal terminal;
    terminal.utf8 = LocaleIsUtf8();
    terminal.isTerminal = isatty(fd) == 1;
    if (!terminal.isTerminal) {
        return terminal;
    }
    struct winsize size {};
    ioctl(fd, TIOCGWINSZ, &size);
    terminal.width = size.ws_col != 0 ? size.ws_col : PositiveOr(Environment("COLUMNS"), 80);
    terminal.height = size.ws_row != 0 ? size.ws_row : PositiveOr(Environment("LINES"), 24);
    const std::string_view type = Environment("TERM");
    terminal.addressable = !type.empty() && type != "dumb";
    terminal.colour = terminal.addressable && Environment("NO_COLOR").empty();
    return terminal;
}

}  // namespace cli
