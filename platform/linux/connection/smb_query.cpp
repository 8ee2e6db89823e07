#include "connection/smb_session.h"

namespace vornplatform {

// Until the runner of programs is there, users of SMB connections stay unknown.
std::optional<SmbUsers> AskSmbStatus() { return std::nullopt; }

}  // namespace vornplatform
