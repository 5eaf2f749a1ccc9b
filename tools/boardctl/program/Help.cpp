#include "program/Help.h"

#include <algorithm>
#include <sstream>

#include "base/Suggestion.h"

namespace boardctl {

namespace {

constexpr std::size_t WIDTH = 79;
constexpr std::size_t COLUMN = 30; ///< column of the texts of options and commands

/// Breaks a line at blanks. The text of an option or a command stays in its column.
std::string wrapped(std::string line) {
    const std::size_t margin = line.rfind("  ", 0) == 0 ? COLUMN : 0;
    std::string text;
    while (line.size() > WIDTH) {
        const std::size_t blank = line.rfind(' ', WIDTH);
        if (blank == std::string::npos || blank <= margin)
            break;
        text += line.substr(0, blank) + "\n";
        line = std::string(margin, ' ') + line.substr(blank + 1);
    }
    return text + line + "\n";
}

/// The innermost command that was recognized.
CLI::App& innermost(CLI::App& app) {
    const std::vector<CLI::App*> recognized = app.get_subcommands();
    return recognized.empty() ? app : innermost(*recognized.front());
}

bool lacksCommand(CLI::App& app) {
    return !innermost(app).get_subcommands(nullptr).empty();
}

std::vector<std::string> knownOptions(CLI::App& app) {
    std::vector<std::string> known;
    for (const CLI::App* each = &innermost(app); each; each = each->get_parent())
        for (const CLI::Option* const option : each->get_options())
            for (const std::string& name : option->get_lnames())
                known.push_back("--" + name);
    return known;
}

/// The message about an unknown command, or about an option without its dashes, such as `help`.
std::string unknownCommand(CLI::App& app, const std::string& word) {
    std::vector<std::string> known = knownOptions(app);
    for (const CLI::App* const each : innermost(app).get_subcommands(nullptr))
        known.push_back(each->get_name());
    return "there is no command '" + word + "'" + board::didYouMean(word, known);
}

std::string unknownOption(CLI::App& app, const std::string& word) {
    const std::string option = word.substr(0, word.find('='));
    std::string text =
        "there is no option '" + option + "'" + board::didYouMean(option, knownOptions(app));
    const auto options = innermost(app).get_options();
    if (word[1] != '-' && std::any_of(options.begin(), options.end(), [](const CLI::Option* each) {
            return each->get_positional();
        }))
        text += " (put -- before words that begin with a dash)";
    return text;
}

/// A hint about a word that may have been meant as an image file; empty if the command takes none.
std::string imageHint(const CLI::App& command) {
    const CLI::Option* const image = command.get_option_no_throw("-i");
    if (!image)
        return "";
    return image->count() > 0 ? " (-i names the image already)" : " (use -i to name an image file)";
}

} // namespace

std::string HelpFormatter::make_help(const CLI::App* app, std::string name,
                                     CLI::AppFormatMode mode) const {
    std::istringstream lines(CLI::Formatter::make_help(app, std::move(name), mode));
    std::string text;
    for (std::string line; std::getline(lines, line);)
        text += wrapped(line);
    return text;
}

std::string HelpFormatter::make_option_usage(const CLI::Option* option) const {
    const std::string word = option->get_name(true) + (option->get_expected_max() > 1 ? "..." : "");
    return option->get_required() ? word : "[" + word + "]";
}

void addExamples(CLI::App& command, std::initializer_list<const char*> calls) {
    std::string text = calls.size() == 1 ? "Example:" : "Examples:";
    for (const char* const call : calls)
        text += std::string("\n  boardctl ") + call;
    const std::string footer = command.get_footer();
    command.footer(text + (footer.empty() ? "" : "\n\n" + footer));
}

std::string explained(CLI::App& app, const CLI::ParseError& error) {
    const std::vector<std::string> words = app.remaining(true);
    const auto option = std::find_if(words.begin(), words.end(), [](const std::string& word) {
        return word.size() > 1 && word[0] == '-' && word != "--";
    });
    if (option != words.end()) // the option is the cause; `error` is only a consequence
        return unknownOption(app, *option);
    const bool isQuestion = dynamic_cast<const CLI::Success*>(&error) != nullptr;
    if ((dynamic_cast<const CLI::RequiredError*>(&error) || isQuestion) && lacksCommand(app))
        return words.empty() ? "a command is missing" : unknownCommand(app, words.front());
    if ((dynamic_cast<const CLI::ExtrasError*>(&error) || isQuestion) && !words.empty())
        return "unexpected word '" + words.front() + "'" + imageHint(innermost(app)) +
               board::didYouMean(words.front(), knownOptions(app));
    std::string what = error.what();
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error)) {
        const std::string name = what.substr(0, what.find(':'));
        if (what.find("missing") != std::string::npos)
            return name + ": the value is missing";
        if (what.find("At Most 1 ") != std::string::npos)
            return name + ": is given more than once";
    }
    return what;
}

std::string adviceAfter(CLI::App& app, const CLI::ParseError* error) {
    std::string help = app.help(); // the innermost command's
    if (dynamic_cast<const CLI::RequiredError*>(error) && lacksCommand(app) &&
        app.remaining(true).empty())
        return help;
    const std::size_t begin = help.find("Usage: ");
    const std::string usage = help.substr(begin, help.find('\n', begin) - begin);
    const std::size_t program = usage.find(' ') + 1;
    return usage + "\nFor details run `" +
           usage.substr(program, usage.find(" [OPTIONS]") - program) + " --help`.\n";
}

} // namespace boardctl
