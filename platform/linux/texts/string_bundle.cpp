// SPDX-License-Identifier: MIT
#include "vorn/platform/string_bundle.h"

#include <clocale>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/files/whole_file.h"
#include "platform/linux/support/host_error.h"
#include "platform/linux/texts/compiled_texts.h"
#include "platform/linux/texts/language_folders.h"
#include "platform/linux/texts/texts_folder.h"
#include "platform/linux/units/section_value.h"

namespace {

constexpr std::string_view kSection = "Texts";

// Bundle and key names come from unit files and become parts of paths.
bool IsPlainName(std::string_view name) {
    return !name.empty() && name.find('/') == std::string_view::npos &&
           name.find("..") == std::string_view::npos;
}

std::vector<std::string> FoldersOfProcess() {
    const char* locale = std::setlocale(LC_MESSAGES, nullptr);
    auto folders = vornplatform::LanguageFolders(locale != nullptr ? locale : "C", secure_getenv);
    folders.emplace_back("en");
    return folders;
}

/** A language whose texts can't be read is one that there is no bundle for. */
std::optional<std::string> ReadBundle(const std::string& path) {
    try {
        return vornplatform::ReadWholeFile(path);
    } catch (const vornplatform::HostError&) {
        return std::nullopt;
    }
}

class Bundle {
public:
    explicit Bundle(const std::string& name) {
        for (const std::string& folder : FoldersOfProcess()) {
            if (auto text = ReadBundle(vornplatform::TextsFolder() + '/' + folder + '/' + name)) {
                sources_.push_back(std::move(*text));
            }
        }
        sources_.emplace_back(vornplatform::CompiledTexts(name));
    }

    // The text of a key in the best language that has one, or null.
    const char* Text(const std::string& key) {
        const auto known = texts_.find(key);
        if (known != texts_.end()) {
            return known->second.c_str();
        }
        for (const std::string& source : sources_) {
            if (auto text = vornplatform::SectionValue(source, kSection, key)) {
                return texts_.emplace(key, std::move(*text)).first->second.c_str();
            }
        }
        return nullptr;
    }

private:
    std::vector<std::string> sources_;
    std::map<std::string, std::string> texts_;
};

}  // namespace

StringBundle::StringBundle(const char* bundle, const char*, const char*, const char*, const char*,
                           const char*)
    : state_(bundle != nullptr && IsPlainName(bundle) ? new Bundle(bundle) : nullptr) {}

StringBundle::~StringBundle() {
    delete static_cast<Bundle*>(state_);
}

const char* StringBundle::Text(const char* key, const char* fallback) {
    if (state_ != nullptr && key != nullptr && IsPlainName(key)) {
        if (const char* text = static_cast<Bundle*>(state_)->Text(key)) {
            return text;
        }
    }
    return fallback != nullptr ? fallback : "";
}
