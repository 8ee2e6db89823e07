#ifndef VORN_PLATFORM_STRING_BUNDLE_H
#define VORN_PLATFORM_STRING_BUNDLE_H

/**
 * @file
 * Localised texts. C++ only.
 */

/** A named bundle of texts in the administrator's language. */
class StringBundle {
public:
    /**
     * Opens a bundle. A bundle that does not exist is an empty one.
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
     * @param fallback  returned when the bundle has no such key
     */
    const char* Text(const char* key, const char* fallback);

private:
    void* state_;
};

static_assert(sizeof(StringBundle) == sizeof(void*), "one pointer of private state");

#endif
