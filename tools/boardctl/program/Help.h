#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace boardctl {

/// Helps that fit into 80 columns.
class HelpFormatter : public CLI::Formatter {
public:
    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override;
    std::string make_option_usage(const CLI::Option* option) const override;
};

/// Puts calls at the end of a command's help; `calls` are what stands behind the program's name.
void addExamples(CLI::App& command, std::initializer_list<const char*> calls);

/// What was wrong with the words of the last parse, for a person, and what may have been meant.
std::string explained(CLI::App& app, const CLI::ParseError& error);

/// What to look at after a wrong call, whose error is null where its words could be parsed: the
/// whole help where a command is missing, else the usage, so that what was wrong stays in sight.
std::string adviceAfter(CLI::App& app, const CLI::ParseError* error);

} // namespace boardctl
