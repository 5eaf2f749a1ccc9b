#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace boardctl {

/// Formats help texts to fit into 80 columns.
class HelpFormatter : public CLI::Formatter {
public:
    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override;
    std::string make_option_usage(const CLI::Option* option) const override;
};

/// Adds examples at the end of a command's help. `calls` don't include the program's name.
void addExamples(CLI::App& command, std::initializer_list<const char*> calls);

/// Explains what was wrong with the command line that was parsed last, and suggests what was meant.
/// `error` is the exception that ended the parse. A request for help is wrong too if the line has
/// unknown words.
std::string explained(CLI::App& app, const CLI::ParseError& error);

/// The text to print after a wrong call: the whole help if a command is missing, else only the
/// usage, so that the message does not scroll away. `error` is null if the words could be parsed.
std::string adviceAfter(CLI::App& app, const CLI::ParseError* error);

} // namespace boardctl
