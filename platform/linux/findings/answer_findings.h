// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_FINDINGS_ANSWER_FINDINGS_H
#define VORN_PLATFORM_LINUX_FINDINGS_ANSWER_FINDINGS_H

#include "platform/linux/findings/finding.h"
#include "platform/linux/support/lost_sources.h"

namespace vornplatform {

/** What lists of open files lack, as far as this process has asked. Throws HostError. */
Findings FindingsOfAnswers();

/** The loss of a source as a finding. */
Finding LossFinding(const LostSource& loss);

/** What lists lack beside lost sources: processes out of sight, volumes under other paths. */
Findings FindWhatIsOutOfSight();

}  // namespace vornplatform

#endif
