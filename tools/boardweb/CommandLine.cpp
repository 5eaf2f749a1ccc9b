#include "CommandLine.h"

#include <algorithm>
#include <random>

#include <sys/resource.h>

#include <CLI/CLI.hpp>

#include "Log.h"
#include "base/Error.h"
#include "base/Notification.h"
#include "base/Text.h"
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
        const bool isAddress =
            name.size() > 2 && name.front() == '[' && name.back() == ']' &&
            name.find_first_not_of("0123456789abcdefABCDEF:.", 1) == name.size() - 1;
        const bool isName = !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
            return c > ' ' && c <= '~' &&
                   std::string_view(":/[]").find(c) == std::string_view::npos;
        });
        return isAddress || isName ? ""
                                   : "'" + board::printable(name) +
                                         "' is not a name (expected NAME or [ADDRESS] in ASCII, "
                                         "without a port)";
    };
    return {check, ""};
}

CLI::Validator notEmpty() {
    const auto check = [](const std::string& path) {
        return std::string(path.empty() ? "is empty (expected a path)" : "");
    };
    return {check, ""};
}

void addOptions(CLI::App& app, Options& options) {
    app.set_version_flag("-V,--version", "boardweb " BOARDWEB_VERSION,
                         "Print the version and exit");
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
            ->type_name("SOCKET")
            ->check(notEmpty());
    app.add_option("--board", options.host.profile,
                   "Board profile whose host to show; default: the file that $BOARDCTL_BOARD "
                   "names, else /etc/boarddrivers/board.toml, else the host that answers at "
                   "/run/boarddrivers/host")
        ->type_name("FILE")
        ->check(notEmpty())
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

std::string explained(const CLI::ParseError& error) {
    std::string what = error.what();
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error)) {
        const std::string name = what.substr(0, what.find(':'));
        if (what.find("missing") != std::string::npos)
            return name + ": the value is missing";
        if (what.find("At Most 1 ") != std::string::npos)
            return name + ": can be given only once";
    }
    return what;
}

/// Raises the limit of open files if it is too low for all connections. Warns if it can't.
void allowConnections() {
    constexpr rlim_t NEEDED = Exchanges::MOST + 20; // 20 for the host and the program
    rlimit files{};
    if (::getrlimit(RLIMIT_NOFILE, &files) != 0 || files.rlim_cur >= NEEDED)
        return;
    const rlim_t allowed = files.rlim_cur;
    files.rlim_cur = files.rlim_max;
    if (files.rlim_max < NEEDED || ::setrlimit(RLIMIT_NOFILE, &files) != 0)
        logLine("warning: only " + std::to_string(allowed) + " files may be open (expected " +
                std::to_string(NEEDED) + "), so clients may have to wait (see `ulimit -n`)");
}

/// A random word that identifies this run of the program.
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
    allowConnections();
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
        logLine(explained(error) + " (see boardweb --help)");
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
