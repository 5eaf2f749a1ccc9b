#include "leds/preview/LedPicture.h"

#include <regex>
#include <set>

#include <gtest/gtest.h>

TEST(LedPicture, DrawsAPictureOfAnyNamesAndLines) {
    const std::string svg = board::ledsToSvg({20,
                                              100,
                                              {{1, "<a&\"b\">\x1B", std::string(19, '0') + "1"}},
                                              {{3, "x < y"}, {20, "late"}}});
    for (const char* const part : {">&lt;a&amp;&quot;b&quot;&gt;\\x1b</text>", ">x &lt; y</text>",
                                   ">2</text>"}) // the end of the axis, in seconds
        EXPECT_NE(svg.find(part), std::string::npos) << part << "\n" << svg;
    EXPECT_EQ(svg.find("late"), std::string::npos);
}

TEST(LedPicture, TellsEachKindOfLightApartWithoutColorsAndSaysWhatDrivesTheLed) {
    using board::LedLight;
    const struct {
        board::LedDrive drive;
        std::optional<LedLight> covered;
        const char* title;
    } CASES[] = {
        {{0, LedLight::STEADY, false}, {}, "a b: lit, from 0.1 s to 0.3 s\nhere"},
        {{0, LedLight::BLINK, false}, {}, "a b: blinks, from"},
        {{0, LedLight::FLASH, false}, {}, "a b: flashes, from"},
        {{0, LedLight::ROLL, false}, {}, "a b: rolls, from"},
        {{0, LedLight::STEADY, true}, {}, "a b: lit for a time, from"},
        {{0, LedLight::BLINK, true}, {}, "a b: blinks for a time, from"},
        {{0, LedLight::ROLL, true}, {}, "a b: rolls for a time, from"},
        {{0, LedLight::STEADY, true}, LedLight::STEADY, "here\nhides c d 1: lit</title>"},
        {{0, LedLight::STEADY, true}, LedLight::BLINK, "here\nhides c d 1: blinks</title>"},
        {{0, LedLight::STEADY, true}, LedLight::ROLL, "here\nhides c d 1: rolls</title>"},
    };
    static const std::regex TITLE("<title>[^<]*</title>"), COLOR("#[0-9a-f]{6}");
    std::set<std::string> pictures;
    for (const auto& [drive, covered, title] : CASES) {
        board::LedWave led{1, "led", "0110", board::LedColor::RED, {{1, 3, drive, {}}}};
        if (covered)
            led.segments[0].covers.push_back({1, 3, {1, *covered, false}});
        board::LedWaves waves{4, 100, {led}, {}, {}};
        waves.rows.resize(2);
        std::tie(waves.rows[0].word1, waves.rows[0].word2) = std::tuple("a", "b");
        std::tie(waves.rows[1].word1, waves.rows[1].word2) = std::tuple("c", "d");
        waves.rows[1].number = 1;
        waves.rows[0].place = "here";
        const std::string svg = board::ledsToSvg(waves);
        EXPECT_NE(svg.find(title), std::string::npos) << title << "\n" << svg;
        const auto begin = svg.find("class=\"ground\"");
        const std::string marks = svg.substr(begin, svg.find("class=\"legend\"") - begin);
        // A hatching remains, a color does not.
        pictures.insert(std::regex_replace(std::regex_replace(marks, TITLE, ""), COLOR, "ink"));
    }
    EXPECT_EQ(pictures.size(), std::size(CASES));
}

TEST(LedPicture, StaysReadableWithALongNameAndALineInEachTick) {
    const auto svgWith = [](unsigned lines) {
        board::LedWaves waves{60, 100, {{1, std::string(210, 'n'), std::string(60, '0')}}, {}};
        for (unsigned tick = 1; tick <= lines; ++tick)
            waves.lines.push_back({tick, "system ready"});
        return board::ledsToSvg(waves);
    };
    const auto sizeOf = [](const std::string& svg) {
        const auto begin = svg.find("height=");
        return svg.substr(begin, svg.find(" font") - begin);
    };
    const std::string svg = svgWith(55);
    EXPECT_EQ(sizeOf(svg), sizeOf(svgWith(20)));
    EXPECT_NE(svg.find("<title>system ready, 0.7 s</title>"), std::string::npos);
    EXPECT_NE(svg.find(">" + std::string(23, 'n') + "\u2026</text>"), std::string::npos);
}
