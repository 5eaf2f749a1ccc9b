#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "descriptor/DescriptorEdit.h"
#include "descriptor/DescriptorSource.h"
#include "descriptor/store/DescriptorTarget.h"

namespace board {

struct StoreOutcome;

/// The record of writes: a file of lines.
struct StoreRecord {
    std::string file; ///< its path, not relative
    /// The line for a write with this outcome.
    std::function<std::string(const StoreOutcome&)> line;
};

/// Options of an edit or a write.
struct StoreManner {
    bool force = false;  ///< store what would be refused otherwise: tags of a wrong size, and a
                         ///< corrupt image's tags before the fault
    bool dryRun = false; ///< find out what would change, write nothing
    bool keepOld = true; ///< save the old image before anything is written
    std::string backup;  ///< the file for the old image; empty: a dated one in the state folder
    std::optional<char> fill; ///< for a write: clears everything behind the image with this byte
    std::optional<StoreRecord> record; ///< gets a line if something is written
};

/// What an edit or a write did. Filled in step by step, so that it shows how far the operation got
/// if it throws.
struct StoreOutcome {
    StoreResult result = StoreResult::FAILED;
    bool isDevice = false;
    bool isTorn = false; ///< an earlier write to the device was interrupted; this operation
                         ///< repairs the device if it succeeds
    std::vector<TagChange> changes;    ///< of an edit
    std::string image;                 ///< the new image
    std::string backup;                ///< the file with the old image; empty if it was not kept
    std::optional<std::string> before; ///< all bytes of the target before
    std::optional<std::string> after;  ///< all bytes afterwards; empty if they can't be read
    bool wouldWrite = false;           ///< it was a dry run, and there is something to write
    std::vector<std::string> notes;    ///< messages about earlier writes
};

/// Called before a device is changed; if it throws, nothing is written.
using Confirm = std::function<void(const StoreOutcome&)>;

/// Changes the tags of an image and stores it, all under one lock: reads, lets `step` edit, saves
/// the old image, writes, reads back and compares. An image file is replaced whole and keeps its
/// size if it has room after the terminator. A device is written from its start in one call, and
/// the bytes after the image stay as they are. If the device does not hold the new image
/// afterwards, the old image is written back.
///
/// If an earlier change of the device was interrupted, the edit starts from the image before that
/// change. Throws Error if the edit needs `manner.force` and it is not set, if the image is too
/// large, or if anything can't be read, saved or written. Exceptions of `step` pass through.
void editDescriptor(const DescriptorSource& source, const StoreManner& manner,
                    const std::function<void(DescriptorEdit&)>& step, const Confirm& confirm,
                    StoreOutcome& outcome);

/// Stores the tags of `image` and a terminator in the same way. The bytes after the terminator
/// stay, on a device and in a file that is larger than its image, unless `manner.fill` clears them.
/// Writes nothing if all bytes are in place already.
void writeDescriptor(const DescriptorSource& source, const StoreManner& manner,
                     const TagImage& image, const Confirm& confirm, StoreOutcome& outcome);

/// The bytes of an image that holds the tags of `image` and ends with one terminator.
std::string terminated(const TagImage& image);

} // namespace board
