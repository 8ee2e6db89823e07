// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_FAULTS_FAULT_HOST_H
#define VORN_TESTS_FAULTS_FAULT_HOST_H

#include <map>
#include <string>
#include <vector>

#include "tests/unit/support/pipeline_test.h"

namespace unit {

/** What a call left behind: everything that its caller, or the system log, can see of it. */
struct Outcome {
    std::string result;              /**< the number returned, or "throws" and what was thrown */
    std::vector<std::string> log;    /**< "priority text" of each line */
    std::vector<std::string> errors; /**< "code source:line" of each code that the library set */
    std::vector<std::string> list;   /**< one text a record */
};

/**
 * A host on which every call that can fail is made three times and more: four processes of three
 * services, five files in three shares on three volumes, a client's server and two SSH sessions,
 * one of them with a connection above it.
 */
class FaultHost : public PipelineTest {
protected:
    void SetUp() override;

    /** Runs a public function by name on an empty list, or on the files of a good enumeration. */
    Outcome Run(const std::string& function);
    /** How often a fault-free run calls each function. */
    std::map<std::string, int> CallsOf(const std::string& function);
    void FailCall(const std::string& call, int number);
    void FailNoCall();

private:
    std::string Call(const std::string& function, std::list<std::string>& services);
};

/** How many descriptors this process has open. */
size_t OpenDescriptors();

}  // namespace unit

#endif
