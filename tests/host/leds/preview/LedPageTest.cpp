#include "leds/preview/LedPage.h"

#include <cmath>
#include <map>
#include <regex>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "host/leds/LedModel.h"
#include "host/leds/RandomTables.h"
#include "leds/LedTable.h"
#include "leds/preview/LedJson.h"
#include "leds/preview/LedPicture.h"
#include "leds/preview/LedText.h"

using nlohmann::json;
using support::below, support::Random, support::randomLine, support::randomTable;

namespace {

constexpr unsigned TICKS = 75; // the blink pattern starts in tick 32

/// A letter for the light of a row with `action`; '-' if the picture draws no strip for it.
char stripOf(int action) {
    switch (action) {
    case LedCtrl::ACTION_ON:
        return 's';
    case LedCtrl::ACTION_BLINK:
        return 'b';
    case LedCtrl::ACTION_ROLL_UP:
    case LedCtrl::ACTION_ROLL_DOWN:
        return 'r';
    default:
        return '-';
    }
}
char stripOf(const std::string& light) {
    return light == "steady" || light == "blink" || light == "roll" ? light[0] : '-';
}

struct Drawn {
    std::vector<std::string> waves;  ///< of each LED: its marks, measured along its ground line
    std::vector<std::string> strips; ///< the hidden light in each tick
};

Drawn readSvg(const std::string& svg) {
    static const std::regex PART("<line x1=\"([^\"]*)\"[^>]* x2=\"([^\"]*)\"[^>]*class=\"ground\"|"
                                 "<path d=\"([^\"]*)\"[^>]*class=\"lit\"|class=\"legend\"|"
                                 "<line x1=\"([^\"]*)\"[^>]* x2=\"([^\"]*)\"[^>]*class=\"hidden\""
                                 "[^>]*?(?:dasharray=\"([^\"]*)\")?/>");
    static const std::regex SHAPE("M[^z]*z"), ACROSS("[MLH]([0-9.]+)");
    Drawn drawn;
    auto& [waves, strips] = drawn;
    double left = 0, right = 0;
    const auto tickAt = [&](double x) { return std::lround((x - left) / (right - left) * TICKS); };
    for (std::sregex_iterator part(svg.begin(), svg.end(), PART), none; part != none; ++part) {
        if ((*part)[1].matched) {
            left = std::stod((*part)[1]);
            right = std::stod((*part)[2]);
            waves.emplace_back(TICKS, '0');
            strips.emplace_back(TICKS, '-');
        } else if ((*part)[4].matched) {
            const std::string dashes = (*part)[6];
            for (long tick = tickAt(std::stod((*part)[4])); tick < tickAt(std::stod((*part)[5]));
                 ++tick)
                strips.back().at(std::size_t(tick)) = dashes.empty()     ? 's'
                                                      : dashes[0] == '1' ? 'r'
                                                                         : 'b';
        } else if (!(*part)[3].matched) {
            break; // the legend has marks too
        }
        const std::string steps = (*part)[3];
        for (std::sregex_iterator shape(steps.begin(), steps.end(), SHAPE); shape != none;
             ++shape) {
            double from = right, to = left;
            const std::string outline = shape->str();
            for (std::sregex_iterator x(outline.begin(), outline.end(), ACROSS); x != none; ++x) {
                from = std::min(from, std::stod((*x)[1]));
                to = std::max(to, std::stod((*x)[1]));
            }
            for (long tick = tickAt(from); tick < tickAt(to); ++tick)
                waves.back().at(static_cast<std::size_t>(tick)) = '1';
        }
    }
    return drawn;
}

/// The wave of each LED, from the lines that a playback prints. Each line holds until the next.
std::vector<std::string> wavesOfPlay(const board::LedWaves& waves) {
    std::vector<std::string> played(waves.leds.size());
    for (unsigned tick = 0; tick < TICKS; ++tick) {
        const std::string moment =
            board::isChange(waves, tick) ? board::momentText(waves, tick) : "";
        auto mark = moment.find('[');
        for (std::string& wave : played) {
            wave += moment.empty() ? wave.back() : moment.at(mark + 1) == '#' ? '1' : '0';
            mark = moment.find('[', mark + 1);
        }
    }
    return played;
}

/// Looks the LEDs up as the page does.
class Page {
public:
    explicit Page(const std::string& text) : m_data(json::parse(text)) {}
    bool hasMachines() const { return !m_data["machines"].is_null(); }

    void startAt(unsigned tick) {
        m_tick = tick;
        m_states.clear();
        for (const json& machine : m_data["machines"])
            m_states.push_back(machine["run"][tick]);
    }
    /// Sends the line of `row` (-1: no line) and advances by a tick. False if the page can't.
    bool step(int row) {
        std::vector<int> next;
        for (std::size_t i = 0; i < m_states.size(); ++i) {
            const json& machine = m_data["machines"][i];
            const auto& rows = machine["rows"];
            const auto found = std::find(rows.begin(), rows.end(), row);
            const auto input = found == rows.end() ? 0 : found - rows.begin() + 1;
            next.push_back(
                machine["next"][static_cast<std::size_t>(input)][std::size_t(m_states[i])]);
            if (next.back() < 0)
                return false;
        }
        m_states = next;
        ++m_tick;
        return true;
    }
    bool isLit(std::size_t led) const {
        const auto& blink = m_data["blink"].get_ref<const std::string&>();
        const std::size_t repeat = m_data["repeat"], lead = blink.size() - repeat;
        const char phase = blink[m_tick < lead ? m_tick : lead + (m_tick - lead) % repeat];
        const auto& lit = m_data["machines"][led]["lit"].get_ref<const std::string&>();
        return ((lit[std::size_t(m_states[led])] - '0') & (phase == '1' ? 2 : 1)) != 0;
    }
    char strip(std::size_t led) const {
        const int look = m_data["machines"][led]["look"][std::size_t(m_states[led])];
        if (look < 0 || m_data["looks"][std::size_t(look)][3].empty())
            return '-';
        return stripOf(m_data["looks"][std::size_t(look)][3].back()[1].get<std::string>());
    }

private:
    json m_data;
    std::size_t m_tick = 0;
    std::vector<int> m_states;
};

/// The row that drives an LED in each tick, or -1, from its segments.
std::vector<int> driversOf(const json& led) {
    std::vector<int> rows(TICKS, -1);
    for (const json& segment : led["segments"])
        for (unsigned tick = segment["from"]; tick < segment["to"]; ++tick)
            rows.at(tick) = segment["row"];
    return rows;
}

/// The light that is hidden in each tick, from an LED's segments.
std::string stripsOf(const json& led) {
    std::string strips(TICKS, '-');
    for (const json& segment : led["segments"])
        for (const json& cover : segment["covered"])
            for (unsigned tick = cover["from"]; tick < cover["to"]; ++tick)
                strips.at(tick) = stripOf(cover["light"].get<std::string>());
    return strips;
}

/// The light of the last one of `holders`, if there are several.
char stripOf(const std::string& holders, const board::LedSequencerProfile& profile) {
    const auto last = holders.rfind("\nrow ");
    return last == std::string::npos
               ? '-'
               : stripOf(profile.commands[std::stoul(holders.substr(last + 5))].action);
}

} // namespace

TEST(LedPage, AgreesWithTheModelAndWithAllOtherViewsOnRandomTables) {
    unsigned withMachines = 0, presses = 0;
    constexpr unsigned TABLES = TESTS_ARE_SLOW ? 10 : 300;
    for (unsigned seed = 0; seed < TABLES; ++seed) {
        SCOPED_TRACE("table " + std::to_string(seed));
        Random random(seed);
        board::LedSequencerProfile profile = randomTable(random, seed % 5 == 0);
        if (seed % 4 != 0 && profile.commands.size() > 6) // long tables are slow: keep a few
            profile.commands.resize(6);
        std::vector<board::LedLine> lines;
        for (unsigned tick = 1; tick < TICKS; ++tick)
            for (unsigned count = below(random, 8); count > 5; --count)
                lines.push_back({tick, randomLine(random, profile)});
        const board::LedWaves waves = board::previewLeds(profile, TICKS, lines);
        const board::LedTable table(profile);
        std::vector<support::LedModel> models; // after each tick
        models.emplace_back(table.commands(), profile.blinkPattern);
        models.back().runDefaults("");
        std::vector<std::string> expected(waves.leds.size()), strips(waves.leds.size());
        std::vector<std::vector<int>> drivers(waves.leds.size());
        for (unsigned tick = 0; tick < TICKS; ++tick) {
            models.push_back(models.back());
            for (const board::LedLine& line : waves.lines)
                if (line.tick == tick && line.row)
                    models.back().run(*line.row, line.line);
            models.back().tick();
            for (std::size_t i = 0; i < expected.size(); ++i) {
                const std::string holders = models.back().holders(waves.leds[i].mask);
                expected[i] += models.back().isLit(waves.leds[i].mask) ? '1' : '0';
                strips[i] += stripOf(holders, profile);
                drivers[i].push_back(holders.empty() ? -1 : std::stoi(holders.substr(4)));
            }
        }
        const json asJson = board::toJson(waves);
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_EQ(asJson["leds"][i]["wave"], expected[i]) << "LED " << i;
            ASSERT_EQ(driversOf(asJson["leds"][i]), drivers[i]) << "LED " << i;
            ASSERT_EQ(stripsOf(asJson["leds"][i]), strips[i]) << "LED " << i;
        }
        const Drawn drawn = readSvg(board::ledsToSvg(waves));
        ASSERT_EQ(drawn.waves, expected);
        ASSERT_EQ(drawn.strips, strips);
        ASSERT_EQ(wavesOfPlay(waves), expected);

        Page page(board::pageData(profile, waves));
        if (!page.hasMachines())
            continue;
        ++withMachines;
        const unsigned from = below(random, TICKS); // the page leaves the script here
        support::LedModel model = models[from + 1];
        page.startAt(from);
        for (unsigned tick = from; tick < from + TICKS; ++tick) {
            for (std::size_t i = 0; i < expected.size(); ++i) {
                const std::uint32_t mask = waves.leds[i].mask;
                ASSERT_EQ(std::pair(page.isLit(i), page.strip(i)),
                          std::pair(model.isLit(mask), stripOf(model.holders(mask), profile)))
                    << "LED " << i << ", tick " << tick << " after " << from;
            }
            const unsigned row = below(random, unsigned(profile.commands.size()) * 4);
            if (row < profile.commands.size() && page.step(static_cast<int>(row))) {
                model.run(row, "");
                ++presses;
            } else {
                ASSERT_TRUE(page.step(-1));
            }
            model.tick();
        }
    }
    EXPECT_GT(withMachines, TABLES * 2 / 3);
    EXPECT_GT(presses, TABLES * 10);
}

TEST(LedPage, OffersTheScriptedRunOnlyIfThereAreTooManyStatesAndKeepsTextApartFromMarkup) {
    board::LedSequencerProfile profile;
    profile.files.push_back({1, {"led", ""}, 1, "</script><b>", board::LedColor::RED});
    profile.commands.push_back(
        {"</script>", "<!--", 0, 1, LedCtrl::ACTION_ON, 0, 900000, false, "here"});
    const auto pageAfter = [&](std::int32_t timeMs) {
        profile.commands[0].timeMs = timeMs;
        return board::ledsToHtml(profile, board::previewLeds(profile, 20, {{2, "</script> <!--"}}),
                                 "<i>\x1b");
    };
    const std::string page = pageAfter(1000);
    EXPECT_EQ(page.find("</script><b>"), std::string::npos);
    EXPECT_EQ(page.find("<!--"), std::string::npos);
    EXPECT_NE(page.find("<title>LEDs of &lt;i&gt;\\x1b</title>"), std::string::npos);
    EXPECT_EQ(page.find("\"machines\":null"), std::string::npos);
    EXPECT_NE(pageAfter(900000).find("\"machines\":null"), std::string::npos);
}
