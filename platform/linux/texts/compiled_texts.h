// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_TEXTS_COMPILED_TEXTS_H
#define VORN_PLATFORM_LINUX_TEXTS_COMPILED_TEXTS_H

#include <string_view>

namespace vornplatform {

/** A bundle's English text as it was built in, empty when there is no such bundle. */
std::string_view CompiledTexts(std::string_view bundle);

}  // namespace vornplatform

#endif
