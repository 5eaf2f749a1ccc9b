#include "leds/preview/LedPage.h"

#include <unordered_map>

#include "base/Text.h"
#include "leds/preview/LedGlyphs.h"
#include "leds/preview/LedJson.h"
#include "leds/preview/LedStateSpace.h"
#include "leds/preview/LedSubtable.h"
#include "leds/preview/LedText.h"
#include "leds/preview/PageParts.h"
#include "leds/preview/Svg.h"
#include "profile/LedActions.h"

namespace board {

namespace {

using nlohmann::ordered_json;

ordered_json rowJson(const LedSequencerProfile::Command& row, bool isReachable) {
    const char* const name = actionName(row.action);
    const ordered_json action = name ? ordered_json(name) : ordered_json(row.action);
    return {{"line", commandOf(row)},   {"place", row.place},      {"mask", row.mask},
            {"action", action},         {"group", row.group},      {"time_ms", row.timeMs},
            {"default", row.isDefault}, {"reachable", isReachable}};
}

ordered_json listOf(const LedDrive& drive) {
    return {drive.row, lightWord(drive.light), drive.isTimed};
}

/// A list of what states look like, without duplicates.
class Looks {
public:
    std::size_t indexOf(const LedMachine::State& state) {
        ordered_json look = listOf(*state.drive);
        look.push_back(ordered_json::array());
        for (const LedDrive& cover : state.covers)
            look.back().push_back(listOf(cover));
        const auto [known, isNew] = m_indices.emplace(look.dump(), m_list.size());
        if (isNew)
            m_list.push_back(std::move(look));
        return known->second;
    }

    ordered_json take() { return std::move(m_list); }

private:
    ordered_json m_list = ordered_json::array();
    std::unordered_map<std::string, std::size_t> m_indices;
};

ordered_json machineJson(const LedMachine& machine, Looks& looks) {
    std::string lit;
    ordered_json look = ordered_json::array(), next = ordered_json::array();
    for (std::size_t input = 0; input <= machine.rows.size(); ++input)
        next.push_back(ordered_json::array());
    for (const LedMachine::State& state : machine.states) {
        lit += static_cast<char>('0' + (state.isLitInDark ? 1 : 0) + (state.isLitInLight ? 2 : 0));
        for (std::size_t input = 0; input < state.next.size(); ++input)
            next[input].push_back(state.next[input] == LedMachine::NOT_LISTED
                                      ? ordered_json(-1)
                                      : ordered_json(state.next[input]));
        look.push_back(state.drive ? ordered_json(looks.indexOf(state)) : ordered_json(-1));
    }
    return {
        {"rows", machine.rows}, {"lit", lit}, {"look", look}, {"next", next}, {"run", machine.run}};
}

/// Replaces `name` in the page with `content`. Call it with the last name in the page first: it
/// then finds the name before any content that happens to contain the same text.
void fill(std::string& page, const std::string& name, const std::string& content) {
    page.replace(page.find(name), name.size(), content);
}

} // namespace

std::string pageData(const LedSequencerProfile& profile, const LedWaves& given) {
    const LedWaves waves = printableWaves(given);
    ordered_json data = {{"preview", toJson(waves)}};
    for (std::size_t i = 0; i < waves.leds.size(); ++i) {
        data["preview"]["leds"][i]["ink"] = inkOf(waves.leds[i].color);
        data["preview"]["leds"][i]["glow"] = glowOf(waves.leds[i].color);
    }
    const std::vector<bool> isReachable = reachableRows(profile);
    data["rows"] = ordered_json::array();
    for (std::size_t i = 0; i < waves.rows.size(); ++i)
        data["rows"].push_back(rowJson(waves.rows[i], isReachable[i]));
    data["blink"] = blinkPhases(profile);
    data["repeat"] = BLINK_PERIOD;
    data["most"] = MOST_LED_STATES;
    Looks looks;
    data["machines"] = nullptr;
    if (const auto machines = exploreLeds(profile, given)) {
        data["machines"] = ordered_json::array();
        for (const LedMachine& machine : *machines)
            data["machines"].push_back(machineJson(machine, looks));
    }
    data["looks"] = looks.take();
    const std::string text = data.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
    std::string safe; // without "<", it can't end the element that holds it
    for (const char c : text)
        if (c == '<')
            safe += "\\u003c";
        else
            safe += c;
    return safe;
}

std::string ledsToHtml(const LedSequencerProfile& profile, const LedWaves& waves,
                       const std::string& title) {
    std::string page = PAGE_HTML;
    fill(page, "{{script}}", PAGE_SCRIPT);
    fill(page, "{{data}}", pageData(profile, waves));
    fill(page, "{{heading}}", xmlText(printable(title)));
    fill(page, "{{style}}", PAGE_STYLE);
    fill(page, "{{title}}", xmlText(printable(title)));
    return page;
}

} // namespace board
