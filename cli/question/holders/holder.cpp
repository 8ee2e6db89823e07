// SPDX-License-Identifier: MIT
#include "cli/question/holders/holder.h"

namespace cli {

std::string_view ReasonName(Reason reason) {
    switch (reason) {
        case Reason::kFile:
            return "file";
        case Reason::kFolder:
            return "working directory";
        case Reason::kRoot:
            return "root directory";
        case Reason::kProgram:
            return "program";
        case Reason::kMapping:
            return "mapping";
        case Reason::kSocket:
            return "socket";
        case Reason::kLoop:
            return "loop device";
        case Reason::kDeviceMapper:
            return "device mapper";
        case Reason::kMd:
            return "md";
        case Reason::kSwap:
            return "swap";
        case Reason::kMount:
            return "mount";
        case Reason::kNfsExport:
            return "NFS export";
        case Reason::kNfsClient:
            return "NFS client";
        case Reason::kNfsLock:
            return "NFS lock";
    }
    return "";
}

}  // namespace cli
