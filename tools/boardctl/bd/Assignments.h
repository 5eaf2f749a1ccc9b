#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "descriptor/TagWords.h"

/// The words "ID=TYPE:VALUE" of the commands that build and edit a descriptor.
namespace boardctl {

/// Adds the assignments to the command's words. `about` ends their help text.
CLI::Option* addAssignments(CLI::App& command, std::vector<std::string>& assignments,
                            const char* about);

/// Assignments to tags that exist; a tag may be named once. Throws WrongCall.
std::vector<board::Assignment> parseForExistingTags(const std::vector<std::string>& words);
/// Assignments to tags that may be missing; a tag, or the address of an interface, may be named
/// once. Throws WrongCall.
std::vector<board::Assignment> parseToPut(const std::vector<std::string>& words);
/// Assignments that make new tags, which have no occurrence yet. Throws WrongCall.
std::vector<board::Assignment> parseForNewTags(const std::vector<std::string>& words);

} // namespace boardctl
