// SPDX-License-Identifier: MIT
#include "cli/host/kernel/unavailable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

namespace {

using cli::KernelFacts;
using testing::HasSubstr;
using testing::IsEmpty;

std::string Status(const std::string& pids, const std::string& capabilities,
                   const std::string& seccomp = "0") {
    return "Name:\tvorn-openfiles\nPid:\t27\nNSpid:" + pids + "\nNSpgid:\t27\t1\nCapEff:\t" +
           capabilities + "\nSeccomp:\t" + seccomp + "\nSeccomp_filters:\t0\n";
}

/** Of root, on a host that has everything. */
KernelFacts Complete() {
    KernelFacts facts;
    facts.status = Status("\t27", "000001ffffffffff");
    facts.users = "         0          0 4294967295\n";
    facts.lockdown = "[none] integrity confidentiality\n";
    facts.release = "6.1.0-40-amd64";
    return facts;
}

KernelFacts WithStatus(const std::string& status) {
    KernelFacts facts = Complete();
    facts.status = status;
    return facts;
}

TEST(KernelIteratorReason, NoneForRootOnACompleteHost) {
    EXPECT_THAT(WhyNotAsked(Complete()), IsEmpty());
}

TEST(KernelIteratorReason, ProcMustBeOfTheOwnPidNamespace) {
    const std::string all = "000001ffffffffff";
    for (const char* pids : {"\t27\t1", "\t5001\t27\t1", ""}) {
        EXPECT_THAT(WhyNotAsked(WithStatus(Status(pids, all))), HasSubstr("PID namespace")) << pids;
    }
    EXPECT_THAT(WhyNotAsked(WithStatus("")), HasSubstr("PID namespace")) << "no /proc at all";
}

TEST(KernelIteratorReason, TakesEitherPairOfCapabilities) {
    struct Case {
        const char* capabilities;
        bool enough;
    };
    for (const Case& each : {
             Case{"0000000000200000", true},   // CAP_SYS_ADMIN
             Case{"000000c000000000", true},   // CAP_PERFMON and CAP_BPF
             Case{"0000008000000000", false},  // CAP_BPF alone
             Case{"0000004000000000", false},  // CAP_PERFMON alone
             Case{"0000000000080004", false},  // what reading /proc takes
             Case{"0000000000000000", false},
             Case{"no number", false},
         }) {
        EXPECT_EQ(WhyNotAsked(WithStatus(Status("\t27", each.capabilities))).empty(), each.enough)
            << each.capabilities;
    }
}

TEST(KernelIteratorReason, TellsWhyTheKernelHasRefused) {
    KernelFacts locked = Complete();
    locked.lockdown = "none integrity [confidentiality]\n";
    KernelFacts users = Complete();
    users.users = "         0       1000          1\n";
    KernelFacts withoutTypes = Complete();
    withoutTypes.typeInformation = false;
    const KernelFacts filtered = WithStatus(Status("\t27", "000001ffffffffff", "2"));
    EXPECT_THAT(WhyRefused(ENOTSUP, Complete()), HasSubstr("built without"));
    for (const int error : {EPERM, EINVAL, EACCES}) {
        EXPECT_THAT(WhyRefused(error, locked), HasSubstr("locked down")) << error;
    }
    EXPECT_THAT(WhyRefused(EPERM, users), HasSubstr("user namespace"));
    EXPECT_THAT(WhyRefused(EPERM, filtered), HasSubstr("seccomp"));
    EXPECT_THAT(WhyRefused(EINVAL, withoutTypes), HasSubstr("type information"));
    EXPECT_THAT(WhyRefused(EINVAL, filtered), HasSubstr("kernel 6.1.0-40-amd64 refuses it"));
    EXPECT_THAT(WhyRefused(ENOSYS, Complete()), HasSubstr("Function not implemented"));
}

}  // namespace
