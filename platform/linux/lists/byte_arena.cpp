#include "platform/linux/lists/byte_arena.h"

#include <algorithm>
#include <new>

namespace vornplatform {
namespace {

constexpr size_t kFirstChunk = 4 * 1024;
constexpr size_t kLargestChunk = 64 * 1024;

}  // namespace

void TextArena::Rewind() {
    if (!chunks_.empty()) {
        Enter(0);
    }
}

void TextArena::Enter(size_t index) {
    next_ = chunks_[index].bytes.get();
    room_ = chunks_[index].size;
    following_ = index + 1;
}

/** Takes the following chunk if the text fits into it, otherwise puts a new one before it. */
bool TextArena::NextChunk(size_t size) {
    const bool fits = following_ < chunks_.size() && chunks_[following_].size >= size;
    if (!fits && !Insert(size)) {
        return false;
    }
    Enter(following_);
    return true;
}

bool TextArena::Insert(size_t size) try {
    const size_t wanted = following_ == 0 ? kFirstChunk : chunks_[following_ - 1].size * 2;
    const size_t length = std::max(size, std::clamp(wanted, kFirstChunk, kLargestChunk));
    Chunk chunk{std::unique_ptr<char[]>(new char[length]), length};
    chunks_.insert(chunks_.begin() + static_cast<std::ptrdiff_t>(following_), std::move(chunk));
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

}  // namespace vornplatform
