// SPDX-License-Identifier: MIT
#include "cli/question/holders/source.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <iterator>

#include "cli/text/escape.h"
#include "support/descriptor.h"
#include "support/read_all.h"

namespace cli {

void Append(Holders& all, Holders more) {
    const auto move = [](auto& from, auto& to) {
        to.insert(to.end(), std::make_move_iterator(from.begin()),
                  std::make_move_iterator(from.end()));
    };
    move(more.rows, all.rows);
    move(more.lost, all.lost);
    move(more.notes, all.notes);
}

std::optional<Named> PlaceOfPath(const Targets& targets, const std::string& path) {
    const support::Descriptor place(open(path.c_str(), O_PATH | O_CLOEXEC));
    if (!place) {
        return std::nullopt;
    }
    const std::string link = fmt::format("/proc/self/fd/{}", place.Get());
    const auto identity = IdentityAt(AT_FDCWD, link.c_str());
    if (!identity) {
        return std::nullopt;
    }
    std::string text = LinkText(AT_FDCWD, link.c_str()).value_or(path);
    Named named;
    named.identity = *identity;
    named.place = targets.PlaceOf(*identity, [&] { return text; });
    named.path = targets.ShownPath(named.place, *identity, text);
    return named;
}

std::string CannotRead(const std::string& path) {
    return fmt::format("can't read {}: {}", Escaped(path, true), std::strerror(errno));
}

std::optional<std::string> ReadKernelFile(const std::string& path) {
    constexpr size_t kLimit = size_t{64} << 20;
    std::string text;
    const support::Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file) {
        return std::nullopt;
    }
    switch (support::ReadAll(file.Get(), kLimit, text)) {
        case support::ReadEnd::kWhole:
            return text;
        case support::ReadEnd::kLimit:
            errno = EFBIG;
            return std::nullopt;
        case support::ReadEnd::kError:
            break;
    }
    return std::nullopt;
}

}  // namespace cli
