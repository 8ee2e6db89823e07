# vorn::build_options: include path, warnings and instrumentation for our own targets. Never exported.
add_library(vorn_build_options INTERFACE)
add_library(vorn::build_options ALIAS vorn_build_options)

# Our own headers are included by their path in this tree.
target_include_directories(vorn_build_options INTERFACE ${PROJECT_SOURCE_DIR})

target_compile_options(vorn_build_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wformat=2 -Wundef
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast>)

if(VORN_SANITIZE)
    target_compile_options(vorn_build_options INTERFACE
        -fsanitize=${VORN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    if(VORN_SANITIZE MATCHES "undefined")
        # It tries addresses by way of a pipe, and takes them for wrong where descriptors are short,
        # as some tests make them.
        target_compile_options(vorn_build_options INTERFACE -fno-sanitize=vptr)
    endif()
    target_link_options(vorn_build_options INTERFACE -fsanitize=${VORN_SANITIZE})
    if(VORN_SANITIZE MATCHES "address")
        # For tests that have to know; compilers have no name for it in common.
        target_compile_definitions(vorn_build_options INTERFACE VORN_ADDRESS_SANITIZER)
    endif()
endif()

if(VORN_COVERAGE)
    add_compile_options(--coverage -fprofile-update=atomic)
    target_compile_definitions(vorn_build_options INTERFACE
        VORN_COVERAGE VORN_COVERAGE_FOLDER="${PROJECT_BINARY_DIR}")
    target_link_options(vorn_build_options INTERFACE --coverage)
endif()

# What dpkg-buildflags sets, in every build that is made to be installed.
if(NOT VORN_SANITIZE AND NOT VORN_COVERAGE)
    target_compile_options(vorn_build_options INTERFACE
        -fstack-protector-strong -fstack-clash-protection -Werror=format-security)
    # No "-z now" here: platform symbols of the library may be supplied lazily; the command adds it.
    target_link_options(vorn_build_options INTERFACE -Wl,-z,relro)
endif()

# vorn::product: for what is shipped, and not for its tests.
add_library(vorn_product INTERFACE)
add_library(vorn::product ALIAS vorn_product)
# The compiler tells in no time what clang-tidy's checks of the same take a third of its time for.
target_compile_options(vorn_product INTERFACE
    $<$<CXX_COMPILER_ID:Clang>:-Wreserved-identifier>
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wredundant-decls;-Wsuggest-override;-Wzero-as-null-pointer-constant>)
# In builds whose product is instrumented its headers are compiled once; the others show what a source
# forgot to include.
if(VORN_SANITIZE OR VORN_COVERAGE)
    target_precompile_headers(vorn_product INTERFACE <algorithm> <filesystem> <functional> <list>
        <map> <memory> <optional> <string> <string_view> <unordered_map> <vector>)
endif()

# Installs a program. In the build tree it finds the libraries beside it, installed where the system
# has them. CMake would add an empty entry there, which is the current folder, to have something to
# change at installation.
function(vorn_install_program target folder component)
    set_target_properties(${target} PROPERTIES
        BUILD_WITH_INSTALL_RPATH ON
        INSTALL_RPATH "$ORIGIN/../lib")
    install(TARGETS ${target} RUNTIME DESTINATION ${folder} COMPONENT ${component})
    cmake_path(ABSOLUTE_PATH folder BASE_DIRECTORY "\${CMAKE_INSTALL_PREFIX}" OUTPUT_VARIABLE absolute)
    install(CODE "file(RPATH_REMOVE FILE \"\$ENV{DESTDIR}${absolute}/${target}\")"
        COMPONENT ${component})
endfunction()

# vorn::fortified: the rest of it, for the stand-in and the command. The library goes without
# (src/CMakeLists.txt).
add_library(vorn_fortified INTERFACE)
add_library(vorn::fortified ALIAS vorn_fortified)
if(NOT VORN_SANITIZE AND CMAKE_BUILD_TYPE MATCHES "^Rel")
    target_compile_options(vorn_fortified INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
endif()
