// SPDX-License-Identifier: MIT
#include "platform/linux/lists/byte_arena.h"

#include <algorithm>
#include <utility>

namespace vornplatform {
namespace {

constexpr size_t kFirstChunk = 4 * 1024;
constexpr size_t kLargestChunk = 64 * 1024;

}  // namespace

void ByteArena::Rewind() {
    if (!chunks_.empty()) {
        Enter(0);
    }
}

void ByteArena::Enter(size_t index) {
    next_ = chunks_[index].bytes.get();
    room_ = chunks_[index].size;
    following_ = index + 1;
}

/** The following chunk if the text fits into it, otherwise a new one before it. */
void ByteArena::TakeChunk(size_t size) {
    if (following_ == chunks_.size() || chunks_[following_].size < size) {
        Insert(size);
    }
    Enter(following_);
}

void ByteArena::Insert(size_t size) {
    const size_t wanted = following_ == 0 ? kFirstChunk : chunks_[following_ - 1].size * 2;
    const size_t length = std::max(size, std::clamp(wanted, kFirstChunk, kLargestChunk));
    Chunk chunk{std::unique_ptr<char[]>(new char[length]), length};
    chunks_.insert(chunks_.begin() + static_cast<std::ptrdiff_t>(following_), std::move(chunk));
}

}  // namespace vornplatform
