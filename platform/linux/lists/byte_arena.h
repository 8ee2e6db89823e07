// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_LISTS_BYTE_ARENA_H
#define VORN_PLATFORM_LINUX_LISTS_BYTE_ARENA_H

#include <cstddef>
#include <cstring>
#include <memory>
#include <vector>

namespace vornplatform {

/** Room for texts that stay where they are, in chunks of growing size. */
class ByteArena {
public:
    /** Copies size bytes. Throws std::bad_alloc when memory is short: it is then as it was. */
    const char* Copy(const char* bytes, size_t size) {
        if (size > room_) {
            TakeChunk(size);
        }
        char* copy = next_;
        std::memcpy(copy, bytes, size);
        next_ += size;
        room_ -= size;
        return copy;
    }

    /** Forgets all texts and keeps the chunks for those to come. */
    void Rewind();

private:
    struct Chunk {
        std::unique_ptr<char[]> bytes;
        size_t size;
    };

    void TakeChunk(size_t size);
    void Insert(size_t size);
    void Enter(size_t index);

    std::vector<Chunk> chunks_;
    size_t following_ = 0; /**< index of the chunk behind the one in use */
    char* next_ = nullptr;
    size_t room_ = 0;
};

}  // namespace vornplatform

#endif
