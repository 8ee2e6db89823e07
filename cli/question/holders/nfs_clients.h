// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_NFS_CLIENTS_H
#define VORN_CLI_QUESTION_HOLDERS_NFS_CLIENTS_H

/**
 * @file
 * What clients of the kernel's NFS server have open, by version 4 of the protocol. Their users
 * aren't told. Version 3 knows no opens: its clients leave nothing but locks.
 */

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/question/holders/source.h"

namespace cli {

/** From a text of `/proc/fs/nfsd/clients/<n>/info`. */
struct NfsClient {
    std::string host;     /**< without its port */
    std::string stateKey; /**< what each of its states has in its number, sixteen hex digits */
};

/** Nothing for a text of another form. */
std::optional<NfsClient> ParseNfsClient(std::string_view info);

/** A file that a client has open, or has a delegation of. */
struct NfsOpen {
    dev_t device = 0; /**< of the file system */
    ino_t inode = 0;
    std::string access; /**< "r", "w" or "rw" */
    /**
     * Stands behind a name that isn't as the kernel ends one. Names are shown there as they are,
     * so whoever made the file may have written this record as well.
     */
    bool doubtful = false;
};

/** From a text of `/proc/fs/nfsd/clients/<n>/states`: each file once. */
std::vector<NfsOpen> ParseNfsStates(std::string_view states, std::string_view stateKey);

class NfsClients : public Source {
public:
    explicit NfsClients(std::string folder = "/proc/fs/nfsd/clients")
        : folder_(std::move(folder)) {}

    void Find(const Targets& targets, Wanted wanted, Holders& holders) override;

private:
    void FindOf(const std::string& client, const Targets& targets, Holders& holders) const;
    static void AddOpens(const NfsClient& client, const std::vector<NfsOpen>& opens,
                         const Targets& targets, Holders& holders);

    const std::string folder_;
};

}  // namespace cli

#endif
