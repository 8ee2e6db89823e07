// SPDX-License-Identifier: MIT
#include "platform/linux/support/lost_sources.h"

#include <map>
#include <mutex>

namespace vornplatform {
namespace {

class Record {
public:
    void Put(const LostSource& loss) {
        const std::lock_guard<std::mutex> lock(mutex_);
        losses_.insert_or_assign(loss.source, loss);
    }
    void Erase(Source source) {
        const std::lock_guard<std::mutex> lock(mutex_);
        losses_.erase(source);
    }
    std::vector<LostSource> All() {
        const std::lock_guard<std::mutex> lock(mutex_);
        std::vector<LostSource> all;
        for (const auto& [source, loss] : losses_) {
            all.push_back(loss);
        }
        return all;
    }

private:
    std::mutex mutex_;
    std::map<Source, LostSource> losses_;
};

Record& TheRecord() {
    static Record record;
    return record;
}

}  // namespace

void NoteLost(Source source, const std::string& text, const std::string& advice) {
    TheRecord().Put({source, text, advice});
}

void NoteWell(Source source) {
    TheRecord().Erase(source);
}

std::vector<LostSource> LostSources() {
    return TheRecord().All();
}

}  // namespace vornplatform
