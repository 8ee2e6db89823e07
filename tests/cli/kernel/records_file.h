// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_CLI_KERNEL_RECORDS_FILE_H
#define VORN_TESTS_CLI_KERNEL_RECORDS_FILE_H

/**
 * @file
 * Records as a program in the kernel writes them.
 */

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "cli/host/kernel/programs/record.h"
#include "support/descriptor.h"
#include "support/write_all.h"

inline std::string Record(vorn_record head, const std::string& path) {
    head.path_length = static_cast<__u32>(path.size());
    std::string record(sizeof(head), '\0');
    std::memcpy(record.data(), &head, sizeof(head));
    return record + path;
}

/** A file that holds them, at its beginning. */
inline support::Descriptor RecordsFile(const std::string& records) {
    support::Descriptor file(memfd_create("records", MFD_CLOEXEC));
    EXPECT_TRUE(support::WriteAll(file.Get(), records));
    EXPECT_EQ(lseek(file.Get(), 0, SEEK_SET), 0);
    return file;
}

#endif
