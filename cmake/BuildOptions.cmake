# vorn::build_options: warnings and instrumentation for our own targets. Never exported.
add_library(vorn_build_options INTERFACE)
add_library(vorn::build_options ALIAS vorn_build_options)

target_compile_options(vorn_build_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wformat=2 -Wundef
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast>)

if(VORN_SANITIZE)
    target_compile_options(vorn_build_options INTERFACE
        -fsanitize=${VORN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(vorn_build_options INTERFACE -fsanitize=${VORN_SANITIZE})
endif()

if(VORN_COVERAGE)
    target_compile_options(vorn_build_options INTERFACE --coverage -fprofile-update=atomic)
    target_link_options(vorn_build_options INTERFACE --coverage)
endif()

# What dpkg-buildflags sets. Not part of the release preset: fortified calls go to __syslog_chk and
# __readlink_chk, and programs that interpose syslog or readlink would no longer see the library's.
# No "-z now" here: platform symbols of the library may be supplied lazily; the command adds it.
if(VORN_HARDENING)
    # -O2 comes with the build type; without optimisation _FORTIFY_SOURCE does nothing.
    target_compile_options(vorn_build_options INTERFACE
        -fstack-protector-strong -Wformat -Werror=format-security
        -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
    target_link_options(vorn_build_options INTERFACE -Wl,-z,relro)
endif()
