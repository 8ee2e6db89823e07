// SPDX-License-Identifier: MIT
#include "platform/linux/findings/finding.h"

#include <algorithm>
#include <exception>
#include <new>

#include "platform/linux/findings/answer_findings.h"
#include "platform/linux/findings/host_findings.h"
#include "platform/linux/support/fault.h"
#include "support/put_text.h"

namespace vornplatform {
namespace {

constexpr char kSource[] = "finding";

std::size_t BlockSize(const Findings& findings) {
    std::size_t size = findings.size() * sizeof(VORN_FINDING);
    for (const Finding& finding : findings) {
        size += finding.subject.size() + finding.text.size() + finding.advice.size() + 3;
    }
    return size;
}

}  // namespace

FindingBlock BuildFindingBlock(const Findings& findings) {
    if (findings.empty()) {
        return nullptr;
    }
    FindingBlock block(static_cast<VORN_FINDING*>(std::calloc(1, BlockSize(findings))));
    if (!block) {
        throw std::bad_alloc();
    }
    VORN_FINDING* record = block.get();
    char* text = reinterpret_cast<char*>(record + findings.size());
    for (const Finding& finding : findings) {
        record->szSubject = support::PutText(text, finding.subject);
        record->state = finding.state;
        record->costsAnswers = finding.costsAnswers ? 1 : 0;
        record->szText = support::PutText(text, finding.text);
        record->szAdvice = support::PutText(text, finding.advice);
        ++record;
    }
    return block;
}

std::string FirstFew(const std::vector<std::string>& words, size_t shown) {
    std::string text;
    for (size_t i = 0; i < std::min(shown, words.size()); ++i) {
        text += (i == 0 ? "" : ", ") + words[i];
    }
    if (words.size() > shown) {
        text += " and " + std::to_string(words.size() - shown) + " more";
    }
    return text;
}

}  // namespace vornplatform

int VORNFindingGet(int scope, VORN_FINDING** findings) try {
    using namespace vornplatform;
    if (findings == nullptr ||
        (scope != VORN_FINDINGS_OF_ANSWERS && scope != VORN_FINDINGS_OF_HOST)) {
        return Fail(KLIBC_ERR_BAD_PARAM, kSource, __LINE__);
    }
    *findings = nullptr;
    const Findings found = scope == VORN_FINDINGS_OF_HOST ? FindingsOfHost() : FindingsOfAnswers();
    *findings = BuildFindingBlock(found).release();
    return static_cast<int>(found.size());
} catch (const std::exception& exception) {
    return vornplatform::FailCaught(exception, vornplatform::kSource, __LINE__);
}
