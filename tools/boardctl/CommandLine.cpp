#include "CommandLine.h"

#include <iostream>

#include "Error.h"
#include "Output.h"

namespace {

std::string profilePathFor(const Options& options, const std::unique_ptr<board::ScratchBoard>& scratch) {
    return scratch ? scratch->board().profile() : options.board;
}

int wrongCall(CLI::App& app, const std::string& what) {
    std::cerr << "boardctl: " << what << "\n\n" << app.help();
    return WRONG_CALL;
}

} // namespace

Board::Board(const Options& options)
    : m_scratch(options.board.empty() ? std::make_unique<board::ScratchBoard>() : nullptr),
      m_profilePath(profilePathFor(options, m_scratch)), m_profile(board::Profile::load(m_profilePath)),
      m_host(m_profile) {}

CLI::Validator notEmpty() {
    return CLI::Validator(
        [](const std::string& word) { return word.empty() ? std::string("is empty") : std::string(); }, "");
}

int runCommandLine(int argc, char** argv) {
    Options options;
    CLI::App app("Hosts, shows and edits a board: its drivers, its descriptor, its simulated twin.",
                 "boardctl");
    app.require_subcommand(1);
    app.fallthrough(); // --board and --format may stand before or after the command
    app.add_option(
           "--board", options.board,
           "Board profile (TOML); without it the command works on a simulated board made for the call")
        ->check(notEmpty())
        ->type_name("FILE");
    app.add_option_function<std::string>(
           "--format", [&](const std::string& format) { options.json = format == "json"; },
           "Output for people or for programs")
        ->check(CLI::IsMember({"text", "json"}))
        ->option_text("text|json");
    for (const auto add : {addRun, addInfo, addFan, addBd, addSim})
        add(app, options);

    try {
        app.parse(argc, argv);
        const int status = options.command();
        return flushOutput() ? status : FAILED;
    } catch (const CLI::CallForHelp&) {
        std::cout << app.help();
        return flushOutput() ? DONE : FAILED;
    } catch (const CLI::ParseError& error) {
        return wrongCall(app, error.what());
    } catch (const WrongCall& error) {
        return wrongCall(app, error.what());
    } catch (const std::exception& error) { // board::Error, or the system out of something
        static_cast<void>(flushOutput());
        std::cerr << "boardctl: " << error.what() << "\n";
        return FAILED;
    }
}
