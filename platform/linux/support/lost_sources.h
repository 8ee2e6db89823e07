// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SUPPORT_LOST_SOURCES_H
#define VORN_PLATFORM_LINUX_SUPPORT_LOST_SOURCES_H

#include <string>
#include <vector>

/**
 * @file
 * Whoever goes on without a source of the host says so here, for the process as a whole: what one
 * thread lost another may show. Safe for use by several threads.
 */

namespace vornplatform {

/** In the order in which they are told. */
enum class Source { kVolumes, kExportedShares, kShareFolders, kSockets, kSmbUsers };

/** A source that could not be had when it was last asked. */
struct LostSource {
    Source source;
    std::string text;   /**< what is missing for which reason, in a sentence */
    std::string advice; /**< what to do about it */
};

/** Remembers a loss until the source is well again; the texts must be escaped already. */
void NoteLost(Source source, const std::string& text, const std::string& advice);

/** Remembers that a source gave all that it has. */
void NoteWell(Source source);

/** What this process has gone without, as it last was. */
std::vector<LostSource> LostSources();

}  // namespace vornplatform

#endif
