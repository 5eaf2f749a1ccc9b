#pragma once

#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "descriptor/TagWords.h"
#include "descriptor/store/DescriptorStore.h"
#include "program/Options.h"

/// What the commands that edit a descriptor have in common.
namespace boardctl {

struct EditWords {
    std::string image; ///< empty: the board's descriptor
    board::EditManner manner;
    bool yes = false;
};

void addEditOptions(CLI::App& command, EditWords& words);

/// Edits the image or the board's device with `step`: shows the changes, asks before it writes to a
/// device, then writes. Returns the exit status.
int edit(const Options& options, const EditWords& words,
         const std::function<void(board::DescriptorEdit&)>& step);

void addAssignments(CLI::App& command, std::vector<std::string>& assignments);

/// Assignments to tags that exist; a tag may be named once. Throws WrongCall.
std::vector<board::Assignment> parseForExistingTags(const std::vector<std::string>& words);
/// Assignments to tags that may be missing; a tag, or the address of an interface, may be named
/// once. Throws WrongCall.
std::vector<board::Assignment> parseToPut(const std::vector<std::string>& words);
/// Assignments that make new tags, which have no occurrence yet. Throws WrongCall.
std::vector<board::Assignment> parseForNewTags(const std::vector<std::string>& words);

} // namespace boardctl
