#include "share_sources.h"

#include "share_folders.h"

namespace vornplatform {

std::shared_ptr<const ShareTable> CurrentShares() {
    return std::make_shared<const ShareTable>(FolderShares());
}

}  // namespace vornplatform
