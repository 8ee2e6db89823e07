// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_STRING_BUNDLE_H
#define VORN_PLATFORM_STRING_BUNDLE_H

/**
 * @file
 * Localised texts. C++ only.
 */

/**
 * A named bundle of texts in the administrator's language, UTF-8.
 *
 * The stand-in reads them from <data folder>/vornplatform1/texts/<language>/<bundle>, section
 * "Texts". The language is that of the process's LC_MESSAGES locale or, where that is "C", of the
 * first set among LANGUAGE, LC_ALL, LC_MESSAGES and LANG, which a set-user-id program ignores. A
 * key that "zh_TW" lacks is looked for in "zh", then in English, which is built in.
 */
class StringBundle {
public:
    /**
     * Opens a bundle. A bundle that does not exist is an empty one, and so is one whose name is
     * null or empty or contains "/" or "..".
     *
     * @param bundle  name of the bundle, such as "service"
     * The other five parameters are reserved: pass null.
     */
    StringBundle(const char* bundle, const char*, const char*, const char*, const char*,
                 const char*);
    ~StringBundle();

    StringBundle(const StringBundle&) = delete;
    StringBundle& operator=(const StringBundle&) = delete;

    /**
     * The text of a key, valid while the bundle lives.
     *
     * @param fallback  returned when the bundle has no such key; the empty text stands for null,
     *                  so that the result is never null
     */
    const char* Text(const char* key, const char* fallback);

private:
    void* state_;
};

static_assert(sizeof(StringBundle) == sizeof(void*), "one pointer of private state");

#endif
