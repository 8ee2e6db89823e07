// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_NFS_EXPORTS_H
#define VORN_CLI_QUESTION_HOLDERS_NFS_EXPORTS_H

#include <string>
#include <string_view>
#include <vector>

#include "cli/question/holders/source.h"

namespace cli {

struct NfsExport {
    std::string path;
    std::string clients; /**< such as "10.0.0.0/8" */
};

/** Of a text of `/proc/fs/nfsd/exports`. */
std::vector<NfsExport> ParseNfsExports(std::string_view text);

/**
 * Folders that the kernel's NFS server has handed out: it holds each from a client's first question
 * until it is no longer exported.
 */
class NfsExports : public Source {
public:
    explicit NfsExports(std::string path = "/proc/fs/nfsd/exports") : path_(std::move(path)) {}

    void Find(const Targets& targets, Wanted wanted, Holders& holders) override;

private:
    const std::string path_;
};

}  // namespace cli

#endif
