#pragma once

#include <initializer_list>
#include <memory>

#include <CLI/CLI.hpp>

#include "program/Options.h"

namespace boardctl {

/// A command, and where the parser stores its words.
template <class Words>
struct Command {
    CLI::App& app;
    Words& words; ///< the words exist as long as the command
};

/// Adds the command that hosts the board. Unlike the code of all other commands, its code is not
/// placed apart (see `runApart`).
template <class Words, auto RUN>
Command<Words> addHostingCommand(CLI::App& parent, Options& options, const char* name,
                                 const char* text) {
    CLI::App& app = *parent.add_subcommand(name, text);
    const auto words = std::make_shared<Words>();
    app.callback([&options, words] {
        options.command = [&options, words] { return RUN(options, *words); };
    });
    return {app, *words};
}

/// Calls RUN. Functions that only cold functions call are cold too, and the compiler places cold
/// code apart. So a host, which runs for years, does not keep the other commands' code in memory.
template <auto RUN, class... Words>
[[gnu::cold, gnu::noinline]] int runApart(const Options& options, const Words&... words) {
    return RUN(options, words...);
}

/// Adds a command below `parent`. RUN(options, words) returns the exit status; it is called once
/// the whole command line has been parsed, with the Words that the command's options filled.
template <class Words, auto RUN>
Command<Words> addCommand(CLI::App& parent, Options& options, const char* name, const char* text) {
    return addHostingCommand<Words, runApart<RUN, Words>>(parent, options, name, text);
}

/// A command without words: RUN(options).
template <auto RUN>
CLI::App& addCommand(CLI::App& parent, Options& options, const char* name, const char* text) {
    CLI::App& app = *parent.add_subcommand(name, text);
    app.callback([&options] { options.command = [&options] { return runApart<RUN>(options); }; });
    return app;
}

/// A function that adds one command, or two related ones.
struct CommandEntry {
    const char* name;
    void (*add)(CLI::App& parent, Options& options);
    const char* second = nullptr; ///< null if it adds only one
};

/// Adds each command whose name is in `options.words`; all of them if there are no words. Creating
/// the parsers of all commands takes more time and memory than most commands need to run.
inline void addCommands(CLI::App& parent, Options& options,
                        std::initializer_list<CommandEntry> entries) {
    const auto isNamed = [&](const char* name) { return name && options.words.count(name) != 0; };
    for (const CommandEntry& each : entries)
        if (options.words.empty() || isNamed(each.name) || isNamed(each.second))
            each.add(parent, options);
}

/// Adds a command that only groups others: one of these must follow it on the command line.
inline CLI::App& addGroup(CLI::App& parent, const char* name, const char* text) {
    CLI::App& app = *parent.add_subcommand(name, text);
    app.require_subcommand(1);
    return app;
}

} // namespace boardctl
