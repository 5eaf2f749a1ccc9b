#include "CommandLine.h"

#include <charconv>
#include <iostream>

#include "Help.h"
#include "Output.h"
#include "base/Error.h"
#include "base/Suggestion.h"

namespace {

std::string profilePathFor(const Options& options,
                           const std::unique_ptr<board::ScratchBoard>& scratch) {
    return scratch ? scratch->board().profile() : options.board;
}

int wrongCall(CLI::App& app, const std::string& what, const CLI::ParseError* error = nullptr) {
    complain(what);
    std::cerr << "\n" << adviceAfter(app, error);
    return WRONG_CALL;
}

} // namespace

BoardProfile::BoardProfile(const Options& options)
    : m_scratch(options.board.empty() ? std::make_unique<board::ScratchBoard>() : nullptr),
      m_profilePath(profilePathFor(options, m_scratch)),
      m_profile(board::Profile::load(m_profilePath)) {}

std::vector<std::string> Board::devices(const std::string& kind, const std::string& name) const {
    std::vector<std::string> names, ofKind;
    std::string known;
    for (const board::Device& device : m_host.devices()) {
        if (device.kind != kind)
            continue;
        known += (known.empty() ? "" : ", ") + device.name;
        ofKind.push_back(device.name);
        if (name.empty() || name == device.name)
            names.push_back(device.name);
    }
    if (names.empty())
        throw board::Error(known.empty() ? profilePath() + ": the board has no " + kind +
                                               " (expected a table [[" + kind + "]])"
                                         : "there is no " + kind + " '" + name + "' (there are: " +
                                               known + ")" + board::didYouMean(name, ofKind));
    return names;
}

CLI::Validator notEmpty() {
    return CLI::Validator(
        [](const std::string& word) {
            return word.empty() ? std::string("is empty") : std::string();
        },
        "");
}

CLI::Validator oneOf(const std::vector<std::string>& words) {
    return CLI::Validator(
        [words](std::string& word) {
            if (CLI::IsMember(words)(word).empty())
                return std::string();
            std::string expected;
            for (const std::string& each : words)
                expected += (expected.empty() ? "" : &each == &words.back() ? " or " : ", ") + each;
            return "'" + word + "' (expected " + expected + ")" + board::didYouMean(word, words);
        },
        "");
}

CLI::Validator seconds(double least, double most) {
    return CLI::Validator(
        [=](const std::string& word) {
            double value = -1;
            // Written so that what is no number at all, which compares with nothing, is refused
            // too.
            const bool fits =
                CLI::detail::lexical_cast(word, value) && value >= least && value <= most;
            return fits ? std::string()
                        : String::format("'%s' (expected seconds, %g to %.0f)", word.c_str(), least,
                                         most)
                              .c_str();
        },
        "");
}

CLI::Validator decimal(long long least, long long most) {
    return CLI::Validator(
        [=](std::string& word) {
            long long value = 0;
            const char* const end = word.data() + word.size();
            const auto [rest, error] = std::from_chars(word.data(), end, value);
            if (error != std::errc() || rest != end || value < least || value > most)
                return "'" + word + "' (expected " + std::to_string(least) + " to " +
                       std::to_string(most) + ")";
            word = std::to_string(value); // the parser would take a zero in front for base 8
            return std::string();
        },
        "");
}

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
