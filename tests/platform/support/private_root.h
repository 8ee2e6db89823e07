// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_PLATFORM_SUPPORT_PRIVATE_ROOT_H
#define VORN_TESTS_PLATFORM_SUPPORT_PRIVATE_ROOT_H

#include <gtest/gtest.h>

#include <functional>
#include <string>

/**
 * Runs a test's body in a forked child with a mount namespace and a root folder of its own: the
 * host's /usr, /proc and /dev, empty /etc and /var, and tmpfs on /volume1 and /volume2. What the
 * body expects counts for the test; nothing is left behind. Whole programs are started in a sample
 * host (scripts/sample-host.sh); this is for a part of one that runs already.
 */
void InPrivateRoot(const std::function<void()>& body);

/** Whether the process may make mounts; says why not otherwise. */
bool CanMount();

/** Writes a file, with the folders above it. */
void WriteFile(const std::string& path, const std::string& text);

/** Makes a folder with those above it. */
void MakeFolder(const std::string& path);

#define SKIP_WITHOUT_MOUNTS() \
    if (!CanMount())          \
    GTEST_SKIP() << "needs root and the right to make mount namespaces"

#endif
