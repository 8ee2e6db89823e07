// SPDX-License-Identifier: MIT
#include "platform/linux/sockets/search_memory.h"

#include <utility>

namespace vornplatform {

SearchMemory::SearchMemory(Now now) : now_(std::move(now)) {}

std::shared_ptr<const SearchFacts> SearchMemory::Facts() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (facts_ == nullptr || now_() - learned_ > kMaxAge) {
        return std::make_shared<const SearchFacts>();
    }
    return facts_;
}

void SearchMemory::Replace(SearchFacts facts) {
    auto replaced = std::make_shared<const SearchFacts>(std::move(facts));
    const std::lock_guard<std::mutex> lock(mutex_);
    facts_ = std::move(replaced);
    learned_ = now_();
}

}  // namespace vornplatform
