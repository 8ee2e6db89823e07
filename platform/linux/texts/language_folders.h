// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_TEXTS_LANGUAGE_FOLDERS_H
#define VORN_PLATFORM_LINUX_TEXTS_LANGUAGE_FOLDERS_H

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vornplatform {

/** Looks up an environment variable: null when it isn't set, as secure_getenv does. */
using EnvironmentLookup = std::function<const char*(const char*)>;

/**
 * The folders of the data folder to look for texts in, best first, before English.
 *
 * The locale of the process decides, without its encoding and modifier, so "de_AT.UTF-8@euro" gives
 * "de_AT" and "de". If it is "C" or "POSIX", as in a program that never called setlocale, the first
 * of LANGUAGE (a list, separated by colons), LC_ALL, LC_MESSAGES and LANG that is set decides.
 * "C.UTF-8" was chosen by somebody: it means English. The list ends where English is named.
 *
 * @param locale  name of the LC_MESSAGES locale, not null
 */
std::vector<std::string> LanguageFolders(std::string_view locale,
                                         const EnvironmentLookup& environment);

}  // namespace vornplatform

#endif
