// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_SOURCES_ITERATOR_SOURCE_H
#define VORN_CLI_QUESTION_SOURCES_ITERATOR_SOURCE_H

#include <sys/types.h>

#include <memory>
#include <mutex>
#include <set>
#include <string_view>

#include "cli/host/kernel/kernel_iterator.h"
#include "cli/question/sources/record_source.h"

namespace cli {

/**
 * The kernel's own pass over all descriptors. The kernel works on one processor; threads that take
 * portions make the records of one while the next one is read.
 *
 * The kernel tells of every process. What it tells of one that this process may not look into by
 * way of /proc is left out, so that both sources give the same.
 */
class IteratorSource : public RecordSource {
public:
    /** Of all descriptors that lead to a volume, at its beginning. */
    explicit IteratorSource(std::unique_ptr<KernelIterator> iterator)
        : iterator_(std::move(iterator)) {}

    int Next(Files& records, RecordTexts& texts) override;
    bool TellsFolders() const override { return true; }
    std::string Notice() const override;

private:
    bool TakePortion(std::string& portion);
    void AppendRecords(std::string_view portion, Files& records, RecordTexts& texts);
    void NoteBareVolume(pid_t pid);

    std::mutex mutex_;                         /**< of what follows */
    std::unique_ptr<KernelIterator> iterator_; /**< none after the end */
    std::set<int> bareVolumes_;
};

}  // namespace cli

#endif
