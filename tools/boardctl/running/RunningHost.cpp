#include "running/RunningHost.h"

#include "program/Board.h"
#include "program/StopSignals.h"

using nlohmann::ordered_json;

namespace boardctl {

board::FoundHost runningHost(const Options& options) {
    if (options.sim)
        throw WrongCall("no host runs a simulated board that is made for this call (expected "
                        "--board with the board of a running host)");
    const BoardProfile board(options);
    return board::findHost(board.profilePath(), board.isSimulated(), StopSignals::waitUntil);
}

std::string textOf(const ordered_json& object, const char* key) {
    const auto member = object.is_object() ? object.find(key) : object.end();
    if (member == object.end() || !member->is_primitive() || member->is_null())
        return "";
    return member->is_string() ? member->get<std::string>() : member->dump();
}

ordered_json listOf(const ordered_json& object, const char* key) {
    const auto member = object.is_object() ? object.find(key) : object.end();
    return member != object.end() && member->is_array() ? *member : ordered_json::array();
}

std::string litText(const ordered_json& led) {
    return textOf(led, "lit") == "true" ? "on" : "off";
}

std::string driveText(const ordered_json& drive) {
    const std::string line = "'" + textOf(drive, "line") + "'", origin = textOf(drive, "origin"),
                      ticks = textOf(drive, "ticks_left");
    std::string text = "row " + textOf(drive, "row") + " '" + textOf(drive, "word1") + " " +
                       textOf(drive, "word2") + " " + textOf(drive, "number") + "' (" +
                       textOf(drive, "action") + "), " +
                       (origin == "start"      ? "as a default since "
                        : origin == "defaults" ? "as a default by " + line + " since "
                                               : "by " + line + " since ") +
                       textOf(drive, "since");
    if (origin == "remembered")
        text += ", from before the host was restarted";
    if (!ticks.empty())
        text += ", ends in " + textOf(drive, "ms_left") + " ms (" + ticks + " ticks)";
    return text;
}

} // namespace boardctl
