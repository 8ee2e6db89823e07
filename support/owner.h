// SPDX-License-Identifier: MIT
#ifndef VORN_SUPPORT_OWNER_H
#define VORN_SUPPORT_OWNER_H

#include <memory>

namespace support {

/** Gives an object of a C interface back by the function that this interface has for it. */
template <auto Release>
struct ReleasedBy {
    template <typename Object>
    void operator()(Object* object) const {
        Release(object);
    }
};

/** Owner of such an object: Owner<DIR, closedir>. */
template <typename Object, auto Release>
using Owner = std::unique_ptr<Object, ReleasedBy<Release>>;

}  // namespace support

#endif
