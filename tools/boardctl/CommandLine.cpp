#include "CommandLine.h"

#include <iostream>

#include "output/Json.h"
#include "output/Messages.h"
#include "program/Commands.h"
#include "program/Help.h"
#include "program/Options.h"
#include "program/WordChecks.h"

namespace boardctl {

namespace {

int wrongCall(CLI::App& app, const std::string& what, const CLI::ParseError* error = nullptr) {
    complain(what);
    std::cerr << "\n" << adviceAfter(app, error);
    return WRONG_CALL;
}

} // namespace

int runCommandLine(int argc, char** argv) {
    Options options;
    CLI::App app("Hosts, shows and edits a board: its drivers, its descriptor, its simulated twin.",
                 "boardctl");
    app.formatter(std::make_shared<HelpFormatter>());
    app.require_subcommand(1);
    app.set_version_flag("--version", "boardctl " BOARDCTL_VERSION, "Print the version and exit");
    app.fallthrough(); // --board and --format may stand before or after the command
    app.add_option("--board", options.board,
                   "Board profile (TOML); without it the command works on a simulated board made "
                   "for the call")
        ->check(notEmpty())
        ->type_name("FILE");
    app.add_option_function<std::string>(
           "--format",
           [&](const std::string& format) {
               options.json = format == "json";
               options.metrics = format == "metrics";
               options.svg = format == "svg";
           },
           "Output for people or for programs; `info` also gives metrics, `leds preview` a picture")
        ->check(oneOf({"text", "json", "metrics", "svg"}))
        ->option_text("text|json|metrics|svg");
    app.footer("Before or after the command: --board FILE, --format FORM; see boardctl --help");
    for (const auto add : {addRun, addInfo, addFan, addTemp, addPower, addLed, addLeds, addButton,
                           addCpu, addFirmware, addBd, addSim})
        add(app, options);
    // Commands have taken it over; here the options stand in full.
    app.footer("");
    addExamples(app, {"run --tour                   each part of a simulated board",
                      "sim create DIR               a simulated board that stays",
                      "--board DIR/board.toml info  what its drivers say",
                      "fan --help                   what a command takes"});

    try {
        app.parse(argc, argv);
        if (options.metrics && !app.got_subcommand("info"))
            throw WrongCall("only info gives metrics");
        if (options.svg &&
            !(app.got_subcommand("leds") && app.get_subcommand("leds")->got_subcommand("preview")))
            throw WrongCall("only leds preview gives svg");
        const int status = options.command();
        return flushOutput() ? status : FAILED;
    } catch (const CLI::CallForHelp&) {
        std::cout << app.help();
        return flushOutput() ? DONE : FAILED;
    } catch (const CLI::CallForVersion& version) {
        std::cout << version.what() << "\n";
        return flushOutput() ? DONE : FAILED;
    } catch (const CLI::ParseError& error) {
        return wrongCall(app, explained(app, error), &error);
    } catch (const WrongCall& error) {
        return wrongCall(app, error.what());
    } catch (const std::exception& error) { // board::Error, or the system out of something
        complain(error.what());
        if (options.json)
            printJson({{"error", error.what()}}, -1);
        static_cast<void>(flushOutput());
        return FAILED;
    }
}

} // namespace boardctl
