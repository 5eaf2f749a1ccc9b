#include "CommandLine.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <set>
#include <string_view>

#include "output/Json.h"
#include "output/Messages.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/Help.h"
#include "program/Options.h"
#include "program/StopSignals.h"
#include "program/WordChecks.h"

namespace boardctl {

namespace {

void addGlobalOptions(CLI::App& app, Options& options) {
    app.formatter(std::make_shared<HelpFormatter>());
    app.require_subcommand(1);
    app.set_version_flag("-V,--version", "boardctl " BOARDCTL_VERSION,
                         "Print the version and exit");
    app.fallthrough(); // these options may come before or after the command
    app.add_option("--board", options.board,
                   "Board profile (TOML); default: the file that $BOARDCTL_BOARD names, else "
                   "/etc/boarddrivers/board.toml")
        ->check(notEmpty())
        ->type_name("FILE");
    app.add_flag("--sim", options.sim,
                 "Use a simulated board, which is made for this call and removed after it");
    app.add_option_function<std::string>(
           "--format",
           [&](const std::string& format) {
               options.json = format == "json";
               options.metrics = format == "metrics";
               options.svg = format == "svg";
               options.html = format == "html";
           },
           "Output format; metrics works only with `info` and `status`, svg and html only with "
           "`leds preview`")
        ->check(oneOf({"text", "json", "metrics", "svg", "html"}))
        ->option_text("text|json|metrics|svg|html");
}

void addAllCommands(CLI::App& app, Options& options) {
    app.footer("Global options: --board FILE, --sim, --format FORMAT; see boardctl --help");
    addCommands(app, options,
                {{"run", addRun},
                 {"status", addStatus},
                 {"watch", addWatch},
                 {"info", addInfo},
                 {"check", addCheck},
                 {"probe", addProbe},
                 {"snapshot", addSnapshot},
                 {"fan", addFan},
                 {"temp", addTemp},
                 {"power", addPower},
                 {"led", addLed},
                 {"leds", addLeds},
                 {"button", addButton},
                 {"cpu", addCpu},
                 {"firmware", addFirmware},
                 {"bd", addBd},
                 {"sim", addSim}});
    // Each command has copied the footer that names the global options. The main help lists these
    // options anyway, so it gets another footer.
    app.footer("Exit status: 0 done, 1 failed, 2 wrong call, 3 found something wrong, 4 declined,\n"
               "128+N ended by signal N.");
    addExamples(app, {"run --sim --tour             see each part of a simulated board",
                      "sim create DIR               create a simulated board to keep",
                      "--board DIR/board.toml info  show what its drivers report",
                      "fan --help                   show the options of a command"});
}

int wrongCall(CLI::App& app, const std::string& what, const CLI::ParseError* error = nullptr) {
    complain(what);
    std::cerr << "\n" << adviceAfter(app, error);
    return WRONG_CALL;
}

/// Answers a line that calls no command: it asks for help or the version, or it is wrong.
int answer(CLI::App& app, const CLI::ParseError& error) {
    // CLI11 reports --help and --version as a success that ends the parse.
    const bool isQuestion = dynamic_cast<const CLI::Success*>(&error) != nullptr;
    if (!isQuestion || !app.remaining(true).empty())
        return wrongCall(app, explained(app, error), &error);
    const bool isHelp = dynamic_cast<const CLI::CallForHelp*>(&error) != nullptr;
    std::cout << (isHelp ? app.help() : error.what() + std::string("\n"));
    return flushOutput() ? DONE : FAILED;
}

bool isCalled(const CLI::App& app, const char* command) {
    const auto called = app.get_subcommands();
    return std::any_of(called.begin(), called.end(),
                       [&](const CLI::App* each) { return each->get_name() == command; });
}

/// Runs the command that the parsed line calls.
int call(const CLI::App& app, const Options& options) {
    if (options.metrics && !isCalled(app, "info") && !isCalled(app, "status"))
        throw WrongCall("--format metrics works only with info and status");
    if ((options.svg || options.html) &&
        !(isCalled(app, "leds") && isCalled(*app.get_subcommand("leds"), "preview")))
        throw WrongCall(std::string("--format ") + (options.svg ? "svg" : "html") +
                        " works only with leds preview");
    if (options.sim && !options.board.empty())
        throw WrongCall("--board and --sim each choose a board (expected one of them)");
    const int status = options.command();
    const bool isPrinted = flushOutput() || StopSignals::isAsked();
    return StopSignals::statusAfter(isPrinted ? status : FAILED);
}

/// Creates the parsers that `words` names (all if it is empty), runs the line's command and ends
/// the program with the command's status. Returns the exit status if the line has no command to run
/// or the command throws. Returns empty if the line runs no command (it asks for help, or is
/// wrong) and only some parsers were created: it takes all of them to answer.
std::optional<int> tryRun(int argc, char** argv, const std::set<std::string_view>& words) {
    Options options;
    options.words = words;
    CLI::App app(
        "Hosts, inspects and edits a board: its drivers, its descriptor, or a simulated board.",
        "boardctl");
    addGlobalOptions(app, options);
    addAllCommands(app, options);
    try {
        app.parse(argc, argv);
        // Exits here: the command has cleaned up, and the system frees what the parsers hold.
        std::exit(call(app, options));
    } catch (const CLI::ParseError& error) {
        return words.empty() ? std::optional(answer(app, error)) : std::nullopt;
    } catch (const WrongCall& error) {
        return wrongCall(app, error.what());
    } catch (const std::exception& error) { // board::Error, or a resource has run out
        complain(error.what());
        if (options.json)
            printJson({{"error", error.what()}}, -1);
        static_cast<void>(flushOutput());
        return StopSignals::statusAfter(dynamic_cast<const Declined*>(&error) ? DECLINED : FAILED);
    }
}

} // namespace

int runCommandLine(int argc, char** argv) {
    const OutputWatch output;
    // Creates only the parsers that are needed: a host would keep the others in memory for years.
    const std::set<std::string_view> words(argv, argv + argc);
    const std::optional<int> status = tryRun(argc, argv, words);
    return status ? *status : tryRun(argc, argv, {}).value();
}

} // namespace boardctl
