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

/// Parses assignments to existing tags; each tag may be named only once. Throws WrongCall.
std::vector<board::Assignment> parseForExistingTags(const std::vector<std::string>& words);
/// Parses assignments to tags that may be missing; each tag, and each address of an interface, may
/// be named only once. Throws WrongCall.
std::vector<board::Assignment> parseToPut(const std::vector<std::string>& words);
/// Parses assignments that create tags, so none may have an index. Throws WrongCall.
std::vector<board::Assignment> parseForNewTags(const std::vector<std::string>& words);

} // namespace boardctl
