#include "CommandLine.h"

#include <random>

#include <CLI/CLI.hpp>

#include "Log.h"
#include "base/Error.h"
#include "base/Notification.h"
#include "feed/EventFeed.h"
#include "feed/History.h"
#include "http/HttpServer.h"
#include "http/Listener.h"
#include "link/HostLink.h"
#include "link/Questions.h"
#include "link/Waits.h"

namespace boardweb {

namespace {

enum ExitStatus : int { DONE = 0, FAILED = 1, WRONG_CALL = 2 };

struct Options {
    std::string listen = "127.0.0.1:8411";
    std::vector<std::string> names;
    HostPlace host;
};

struct WrongCall : board::Error {
    using Error::Error;
};

CLI::Validator hostName() {
    const auto check = [](const std::string& name) -> std::string {
        const bool isAddress = name.size() > 2 && name.front() == '[' && name.back() == ']';
        const bool isName = !name.empty() && name.find_first_of(":/ []") == std::string::npos;
        return isAddress || isName ? "" : "is not a name (expected NAME or [ADDRESS], no port)";
    };
    return {check, ""};
}

void addOptions(CLI::App& app, Options& options) {
    app.set_version_flag("--version", "boardweb " BOARDWEB_VERSION, "Print the version and exit");
    app.add_option(
           "--listen", options.listen,
           "Where to serve HTTP: ADDRESS:PORT of this machine or the path of a Unix socket; "
           "default: 127.0.0.1:8411")
        ->type_name("ADDRESS");
    app.add_option("--allow-host", options.names,
                   "Also answer requests for this name, not only 127.0.0.1, localhost and [::1]; "
                   "may be repeated")
        ->type_name("NAME")
        ->check(hostName())
        ->allow_extra_args(false)
        ->take_all();
    auto* const socket =
        app.add_option("--host", options.host.socket, "Status socket of the host to show")
            ->type_name("SOCKET");
    app.add_option("--board", options.host.profile,
                   "Board profile whose host to show; default: the file that $BOARDCTL_BOARD "
                   "names, else /etc/boarddrivers/board.toml, else the host that answers at "
                   "/run/boarddrivers/host")
        ->type_name("FILE")
        ->excludes(socket);
    app.footer("Shows a board that `boardctl run` hosts. Nothing on the board can be changed "
               "through boardweb.\n"
               "Exit status: 0 ended by SIGINT or SIGTERM, 1 failed, 2 wrong call.");
}

ListenAddress addressOf(const Options& options) {
    try {
        ListenAddress address(options.listen);
        if (address.isLocal() || !options.names.empty())
            return address;
    } catch (const board::Error& error) {
        throw WrongCall(std::string("--listen: ") + error.what());
    }
    throw WrongCall("--listen: other machines can connect to " + options.listen +
                    " (expected a loopback address such as 127.0.0.1, or --allow-host NAME with "
                    "the name by which they call this machine)");
}

/// A word that differs from run to run.
std::string runWord() {
    std::random_device random;
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string word;
    for (int i = 0; i < 8; ++i)
        word += DIGITS[random() % (sizeof DIGITS - 1)];
    return word;
}

void serve(const Options& options) {
    const ListenAddress address = addressOf(options);
    Waits waits;
    EventFeed feed(runWord(), [&] { waits.wake(); });
    History history;
    Questions questions([&] { waits.wake(); });
    HostLink link(options.host, waits, feed, history, questions);
    const Listener listener(address);
    HttpServer server(listener, {feed, history, questions}, options.names);
    waits.setWork([&] { return server.endOverdue(); });
    logLine("listening on " + listener.name());
    board::notifyInitSystem("READY=1");
    link.run();
}

} // namespace

int runCommandLine(int argc, char** argv) {
    Options options;
    CLI::App app("Shows a hosted board in a browser.", "boardweb");
    addOptions(app, options);
    try {
        app.parse(argc, argv);
        serve(options);
        return DONE;
    } catch (const CLI::Success& question) { // --help or --version
        return app.exit(question);
    } catch (const CLI::ParseError& error) {
        logLine(error.what() + std::string(" (see boardweb --help)"));
        return WRONG_CALL;
    } catch (const WrongCall& error) {
        logLine(error.what());
        return WRONG_CALL;
    } catch (const std::exception& error) {
        logLine(error.what(), true);
        return FAILED;
    }
}

} // namespace boardweb
