#pragma once

#include <functional>
#include <string>
#include <vector>

#include "descriptor/DescriptorEdit.h"
#include "descriptor/DescriptorSource.h"

namespace board {

/// Options of an edit.
struct EditManner {
    bool force = false;  ///< edit a corrupt image too; the tags before the fault stay
    bool dryRun = false; ///< find out what would change, write nothing
    bool keepOld = true; ///< keep the old image before anything is written
    std::string backup;  ///< the file for it; empty: a dated one in the state folder
};

/// The result of an edit.
struct EditOutcome {
    bool isDevice = false;
    bool isWritten = false;
    std::vector<TagChange> changes; ///< if none, nothing was written
    std::string backup;             ///< the file with the old image; empty if it was not kept
};

/// Changes the tags of an image and stores it, all under one lock: reads, lets `step` edit, keeps
/// the old image, writes, reads back and compares. An image file is replaced whole and keeps its
/// size if there is room after the terminator. A device is written from its start in one call, and
/// the bytes after the image stay. If the device then holds something else, the old image is
/// written back.
///
/// `confirm` is called before a device is changed; if it throws, nothing is written. Throws Error
/// for a corrupt image without `force`, an image that is too large, and everything that can't be
/// read, kept or written. What `step` throws passes through.
EditOutcome editDescriptor(const DescriptorSource& source, const EditManner& manner,
                           const std::function<void(DescriptorEdit&)>& step,
                           const std::function<void(const std::vector<TagChange>&)>& confirm);

} // namespace board
