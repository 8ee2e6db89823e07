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
