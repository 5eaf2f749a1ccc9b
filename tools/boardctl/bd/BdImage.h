#pragma once

#include <functional>
#include <string>

#include "CBoardDescr.h"
#include "bd/BdCommands.h"

namespace boardctl {

/// The bytes of an image file, or of the board's device if `image` is empty.
std::string readBytes(const Options& options, const std::string& image);

/// Calls `action` with the tags of an image and returns its status. Of a corrupt image the action
/// gets the tags before the fault, and the status is FAILED.
int withTags(const Options& options, const BdWords& words,
             const std::function<int(CBoardDescr&)>& action);

} // namespace boardctl
