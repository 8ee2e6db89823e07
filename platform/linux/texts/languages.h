#ifndef VORN_PLATFORM_LINUX_TEXTS_LANGUAGES_H
#define VORN_PLATFORM_LINUX_TEXTS_LANGUAGES_H

/**
 * @file
 * Where the localised texts come from: the administrator's language, the data folder and the
 * English texts that are compiled in.
 */

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

/** The folder that holds a folder for each language. */
const std::string& TextsFolder();

/** Reads texts from another folder from now on: for the tests, not to be used by two threads. */
void UseTextsFolder(std::string folder);

/** A bundle's English text as it was built in, empty when there is no such bundle. */
std::string_view CompiledTexts(std::string_view bundle);

}  // namespace vornplatform

#endif
