#ifndef VORN_CLI_QUESTION_ENUMERATION_H
#define VORN_CLI_QUESTION_ENUMERATION_H

#include <list>

#include "cli/question/columns.h"

namespace cli {

/**
 * Fills a list with every file that is held open on a volume, as EnumOpenedFile does, with the
 * identities of the caller. On a host with control groups v2 alone services have their names
 * nevertheless (see ServiceUnits).
 *
 * @return negative, with the platform's error code set, when there is no answer
 */
int EnumerateFiles(std::list<OpenedFile>& files, VORN::FileHandle::ENUM_BY by);

}  // namespace cli

#endif
