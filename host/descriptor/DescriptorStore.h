#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "descriptor/DescriptorEdit.h"

namespace board {

/// Where a descriptor's image lies: in a file or device that the user names, or in a board's
/// device, which also is a device where it is an ordinary file.
struct DescriptorPlace {
    std::string path;
    std::optional<unsigned>
        boardDeviceSize; ///< a board's device: its size, which an image must stay below
};

/// How an edit is done.
struct EditManner {
    bool force = false;  ///< also on a corrupt image, of which the tags before the fault stay
    bool dryRun = false; ///< find out what would change, write nothing
    bool keepOld = true; ///< keep the old image before anything is written
    std::string backup;  ///< the file for it; empty: a dated one in the state folder
};

/// What became of an edit.
struct EditOutcome {
    bool isDevice = false;
    bool isWritten = false;
    std::vector<TagChange> changes; ///< none: nothing was written
    std::string backup;             ///< where the old image was kept; empty where it was not
};

/// Changes the tags of an image and stores it, all under one lock: reads, lets `step` edit, keeps
/// the old image, writes, reads back and compares. An image file is replaced whole and keeps its
/// size where it has room behind the terminator; a device is written from its start in one call,
/// and what lies behind the image stays. Where a device holds something else afterwards the old
/// image is written back.
///
/// `confirm` is asked before a device is changed and throws to refuse; nothing is written then.
/// Throws Error for a corrupt image without `force`, an image that is too large, and everything
/// that can't be read, kept or written; what `step` throws passes through.
EditOutcome editDescriptor(const DescriptorPlace& place, const EditManner& manner,
                           const std::function<void(DescriptorEdit&)>& step,
                           const std::function<void(const std::vector<TagChange>&)>& confirm);

} // namespace board
