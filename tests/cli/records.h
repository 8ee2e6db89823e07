// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_CLI_RECORDS_H
#define VORN_TESTS_CLI_RECORDS_H

#include <string>

#include "cli/question/record.h"

/** What the records of a test program point into. */
inline cli::RecordTexts& RecordTextsOfTests() {
    static cli::RecordTexts texts;
    return texts;
}

/** A record as an enumeration leaves it, of a process of its own. */
inline cli::FileRecord Record(const std::string& fullPath, const std::string& user = "alice",
                              const std::string& service = "SMB", const std::string& pid = "4711") {
    cli::RecordTexts& texts = RecordTextsOfTests();
    cli::FileRecord file;
    file.fullPath = texts.Keep(fullPath);
    file.path = file.fullPath;
    file.filename = file.fullPath.substr(file.fullPath.rfind('/') + 1);
    file.process = &texts.AddProcess({pid, service, "192.0.2.7", user});
    return file;
}

#endif
