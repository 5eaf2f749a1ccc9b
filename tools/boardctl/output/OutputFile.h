#pragma once

#include <string>

#include <CLI/CLI.hpp>

/// The option `-o FILE` of commands that otherwise print on standard output.
namespace boardctl {

/// `file` stays empty if the option is not used.
void addOutputOption(CLI::App& command, std::string& file);

/// Replaces `file` as a whole, or prints on standard output if `file` is empty.
void printOrReplace(const std::string& file, const std::string& text);

} // namespace boardctl
