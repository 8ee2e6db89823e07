// SPDX-License-Identifier: MIT
#include "tests/unit/support/scripted_setters.h"

#include "vorn/filehandle.h"

using VORN::FileHandle::OpenedFile;

namespace {

using Setter = int(OpenedFile*, const std::string&);

int Call(const char* name, Setter* real, OpenedFile* file, const std::string& text) {
    const auto left = unit::TheSetters().callsLeft.find(name);
    const bool refuses = left != unit::TheSetters().callsLeft.end() && --left->second == 0;
    return real(file, refuses ? std::string() : text);
}

}  // namespace

// The linker gives the library's calls to __wrap_NAME and the setter itself to __real_NAME. An odd
// address would read as a virtual function where a test points to the setter as a member.
#define MANGLED(length, name) \
    _ZN4VORN10FileHandle10OpenedFile##length##name##ERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE
#define PASTE(prefix, name) PASTE_EXPANDED(prefix, name)
#define PASTE_EXPANDED(prefix, name) prefix##name
#define WRAP_SETTER(length, name)                                                           \
    extern "C" Setter PASTE(__real_, MANGLED(length, name));                                \
    extern "C" __attribute__((aligned(16))) Setter PASTE(__wrap_, MANGLED(length, name));   \
    int PASTE(__wrap_, MANGLED(length, name))(OpenedFile * file, const std::string& text) { \
        return Call(#name, &PASTE(__real_, MANGLED(length, name)), file, text);             \
    }

WRAP_SETTER(6, setPid)
WRAP_SETTER(11, setFullPath)
WRAP_SETTER(7, setPath)
WRAP_SETTER(14, setServiceName)
WRAP_SETTER(7, setHost)
WRAP_SETTER(7, setUser)
WRAP_SETTER(11, setFilename)
WRAP_SETTER(7, setTime)
