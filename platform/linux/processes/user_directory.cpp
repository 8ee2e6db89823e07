#include "platform/linux/processes/user_directory.h"

#include <pwd.h>

#include <cerrno>
#include <vector>

#include "platform/linux/support/host_error.h"

namespace vornplatform {
namespace {

constexpr std::size_t kFirstBufferSize = 1024;
constexpr std::size_t kLastBufferSize = std::size_t{1} << 20;

/** Asks the name service for a user and hands the record found, or null, to a reader. */
template <typename Query, typename Reader>
auto LookUp(const Query& query, const Reader& reader) {
    std::vector<char> buffer(kFirstBufferSize);
    passwd record{};
    passwd* found = nullptr;
    int error = query(&record, buffer.data(), buffer.size(), &found);
    while (error == EINTR || (error == ERANGE && buffer.size() < kLastBufferSize)) {
        buffer.resize(error == ERANGE ? buffer.size() * 2 : buffer.size());
        error = query(&record, buffer.data(), buffer.size(), &found);
    }
    // Any other value may as well mean that there is no such user, according to the service asked.
    if (IsShortage(error)) {
        throw HostError(error);
    }
    return reader(found);
}

std::string FindName(uid_t uid) {
    const auto query = [uid](auto... rest) { return getpwuid_r(uid, rest...); };
    return LookUp(query, [uid](const passwd* found) -> std::string {
        const bool named = found != nullptr && found->pw_name != nullptr && *found->pw_name != '\0';
        return named ? found->pw_name : std::to_string(uid);
    });
}

}  // namespace

const std::string& UserDirectory::NameOf(uid_t uid) {
    const auto known = names_.find(uid);
    return known != names_.end() ? known->second : names_.emplace(uid, FindName(uid)).first->second;
}

std::optional<uid_t> UserDirectory::IdOf(const char* name) {
    const auto query = [name](auto... rest) { return getpwnam_r(name, rest...); };
    return LookUp(query, [](const passwd* found) {
        return found != nullptr ? std::optional<uid_t>(found->pw_uid) : std::nullopt;
    });
}

}  // namespace vornplatform
