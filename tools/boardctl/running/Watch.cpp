#include <string>

#include "output/EventLines.h"
#include "output/Messages.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/StopSignals.h"
#include "running/RunningHost.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

/// The event for people. An event without a text of its own is shown as JSON.
std::string lineOf(const ordered_json& event) {
    const std::string text = textOf(event, "text");
    return textOf(event, "time") + " " +
           (text.empty() ? event.dump(-1, ' ', false, ordered_json::error_handler_t::replace)
                         : text);
}

int watch(const Options& options) {
    StopSignals::expectAsEnd();
    board::FoundHost host = runningHost(options);
    host.client.monitor();
    complain("watching " + host.client.path() + " until SIGINT (Ctrl-C)");
    EventLines lines(options.json);
    while (!lines.isLost()) {
        const auto next = host.client.next();
        if (!next)
            return DONE;
        if (next->lost > 0)
            lines.fault(std::to_string(next->lost) +
                            " events came faster than they could be printed",
                        {{"lost", next->lost}});
        if (next->event.is_object() && !lines.isLost())
            lines.print(textOf(next->event, "event").c_str(), lineOf(next->event), next->event);
    }
    return StopSignals::isAsked() ? DONE : FAILED;
}

} // namespace

void addWatch(CLI::App& app, Options& options) {
    addCommand<watch>(
        app, options, "watch",
        "Show the events of the running host until it ends, or a signal ends this command");
}

} // namespace boardctl
