// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_VISIBILITY_H
#define VORN_CLI_QUESTION_HOLDERS_VISIBILITY_H

#include <string>
#include <vector>

#include "cli/question/holders/source.h"

namespace cli {

/**
 * Whether /proc shows every process there is; a sentence to the lost ones for whatever hides some:
 * a PID namespace, or /proc mounted so that it shows everybody their own alone.
 */
class Visibility : public Source {
public:
    /** @param inside  processes outside of this PID namespace are of no interest */
    explicit Visibility(bool inside) : inside_(inside) {}

    void Find(const Targets& targets, Wanted wanted, Holders& holders) override;

private:
    const bool inside_;
};

}  // namespace cli

#endif
