#include "leds/preview/LedPicture.h"

#include <algorithm>
#include <set>
#include <vector>

#include "base/Text.h"
#include "leds/preview/LedGlyphs.h"
#include "leds/preview/LedText.h"
#include "leds/preview/Svg.h"

namespace board {

namespace {

// If the picture fills the width of an A4 page, the letters are still seven points high. In black
// and white, the LEDs are the darkest part.
constexpr double ROW = 32;
constexpr double LANE = 18; ///< height of a row of flags
constexpr double LETTER = 7.3;
constexpr double MARGIN = 14;
constexpr double BULB = 5; ///< radius of the LED beside its name
constexpr double MIN_PLOT = 320, MAX_PLOT = 660;
constexpr double FIGURE = 44;  ///< minimum distance between two numbers on the axis
constexpr double MIN_TICK = 4; ///< minimum distance between two tick marks
constexpr double BELOW = 46;   ///< height of the axis with its numbers and unit
constexpr double SAMPLE = 30;  ///< width of a sample in the legend
constexpr double LEGEND_ROW = 26;
constexpr double MS_A_SECOND = 1000;
constexpr std::size_t MOST_NAME = 24;      ///< columns; the tooltip has the whole name
constexpr std::size_t MOST_WORD_LANES = 6; ///< below these, a flag's words are only in its tooltip

constexpr char PALE[] = "#f3f5f7", GRID[] = "#cfd5db", AXIS[] = "#5b6570", NAME[] = "#15191d",
               FLAG[] = "#8c1d18", HIDDEN[] = "#5b6570";

/// The smallest of 1, 2, 5, 10, 20, ... that is not below `least`.
double roundStep(double least) {
    double step = 1;
    for (int i = 0; step < least; ++i)
        step *= i % 3 == 1 ? 2.5 : 2;
    return step;
}

/// A sample of the legend.
struct Sample {
    std::string text;
    LedDrive drive;
    std::string wave;
    LedLight hidden;
};

class Picture {
public:
    explicit Picture(const LedWaves& waves) : m_waves(waves) {
        m_left = 2 * MARGIN +
                 LETTER * static_cast<double>(std::min(longestName(waves), MOST_NAME)) + 2 * BULB +
                 4;
        m_plot = std::clamp(waves.ticks * 16.0, MIN_PLOT, MAX_PLOT);
        placeFlags();
        m_top = MARGIN + LANE * static_cast<double>(m_lanes) + 4;
        m_bottom = m_top + ROW * static_cast<double>(waves.leds.size());
    }

    std::string draw() {
        double width = m_left + m_plot + 2 * MARGIN; // room for half of a number on the axis
        for (const Flag& flag : m_flags)
            width = std::max(width, flag.end + MARGIN);
        const std::vector<Sample> samples = samplesOfLegend();
        Svg legend;
        const double height = drawLegend(legend, samples, width, m_bottom + BELOW);
        const std::string w = svgNumber(width), h = svgNumber(height);
        m_svg.add("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + w + "\" height=\"" + h +
                  "\" viewBox=\"0 0 " + w + " " + h +
                  "\" font-family=\"monospace\" font-size=\"12\" role=\"img\">\n");
        define();
        m_svg.rectangle(0, 0, width, height, "#ffffff");
        for (std::size_t i = 0; i < m_waves.leds.size(); i += 2) // guides the eye along a row
            m_svg.rectangle(MARGIN / 2, rowAt(i), m_left + m_plot - MARGIN / 2, ROW, PALE);
        drawAxis();
        for (const Flag& flag : m_flags)
            drawFlag(flag);
        for (std::size_t i = 0; i < m_waves.leds.size(); ++i)
            drawLed(m_waves.leds[i], rowAt(i));
        m_svg.add(legend.source());
        return m_svg.source() + "</svg>\n";
    }

private:
    struct Flag {
        const LedLine* line;
        std::size_t lane; ///< MOST_WORD_LANES if it has no words
        double end;
    };

    double at(double tick) const { return m_left + m_plot * tick / m_waves.ticks; }
    double rowAt(std::size_t led) const { return m_top + ROW * static_cast<double>(led); }

    /// Places each flag below those that reach across its pole, so that no pole crosses a flag.
    void placeFlags() {
        for (const LedLine& line : m_waves.lines) {
            if (line.tick >= m_waves.ticks)
                continue;
            const double begin = at(line.tick);
            std::size_t lane = 0;
            for (const Flag& flag : m_flags)
                if (flag.end > begin)
                    lane = std::max(lane, flag.lane + 1);
            const double words = LETTER * static_cast<double>(columnsOf(line.line)) + 14;
            m_flags.push_back({&line, lane, begin + (lane < MOST_WORD_LANES ? words : 0)});
            m_lanes = std::max(m_lanes, lane + 1);
        }
    }

    /// Adds the hatchings that occur, and a title for readers who do not see the picture.
    void define() {
        m_svg.add("<title>What " + std::to_string(m_waves.leds.size()) + " LEDs show in " +
                  secondsText(m_waves, m_waves.ticks) + "</title>\n");
        std::set<std::string> inks = {NAME};
        for (const LedWave& led : m_waves.leds)
            for (const LedSegment& segment : led.segments)
                if (segment.drive.isTimed)
                    inks.insert(inkOf(led.color));
        m_svg.add("<defs>\n");
        for (const std::string& ink : inks)
            m_svg.add(hatchingIn(ink));
        m_svg.add("</defs>\n");
    }

    /// Draws the time in seconds, with a short mark for each tick if there is room.
    void drawAxis() {
        const double whole = static_cast<double>(m_waves.ticks) * m_waves.tickMs;
        const double step =
            std::max(roundStep(whole * FIGURE / m_plot), static_cast<double>(m_waves.tickMs));
        for (int mark = 0; mark * step <= whole; ++mark) {
            const double ms = mark * step;
            const double x = at(ms / m_waves.tickMs);
            m_svg.line(x, m_top, x, m_bottom + 7, GRID);
            m_svg.text(x, m_bottom + 21, svgNumber(ms / MS_A_SECOND), "middle", AXIS);
        }
        m_svg.line(m_left, m_bottom, m_left + m_plot, m_bottom, AXIS);
        for (unsigned tick = 0; m_plot >= MIN_TICK * m_waves.ticks && tick <= m_waves.ticks; ++tick)
            m_svg.line(at(tick), m_bottom, at(tick), m_bottom + 3, AXIS);
        m_svg.text(m_left + m_plot / 2, m_bottom + 38,
                   "seconds, a tick is " + svgNumber(m_waves.tickMs / MS_A_SECOND) + " s", "middle",
                   AXIS);
    }

    void drawLed(const LedWave& led, double y) {
        const double ground = y + (ROW + LAMP_HEIGHT) / 2 - 2;
        const std::string ink = inkOf(led.color);
        const char* const color = colorName(led.color);
        m_svg.begin(led.name + (color ? std::string(", ") + color : ""));
        m_svg.text(m_left - MARGIN / 2 - 2 * BULB - 6, ground - 5, cutTo(MOST_NAME, led.name),
                   "end", NAME);
        if (color)
            m_svg.circle(m_left - MARGIN / 2 - BULB - 2, ground - 9, BULB, glowOf(led.color),
                         std::string(" stroke=\"") + NAME + "\"");
        m_svg.end();
        m_svg.line(m_left, ground, m_left + m_plot, ground, ink, " class=\"ground\"");
        for (const LedSegment& segment : led.segments) {
            const LedStretch stretch{at(segment.begin), at(segment.end), m_plot / m_waves.ticks,
                                     ground};
            m_svg.begin(segmentText(m_waves, segment));
            m_svg.rectangle(stretch.left, y, stretch.right - stretch.left, ROW, "none",
                            " pointer-events=\"all\"");
            drawLight(m_svg, segment.drive,
                      led.wave.substr(segment.begin, segment.end - segment.begin), stretch, ink);
            drawHiddenLights(segment, ground);
            m_svg.end();
        }
    }

    void drawHiddenLights(const LedSegment& segment, double ground) {
        const std::vector<LedLight> lights = hiddenLights(segment);
        for (auto begin = lights.begin(); begin != lights.end();) {
            const auto end =
                std::find_if(begin, lights.end(), [&](LedLight light) { return light != *begin; });
            const auto x = [&](auto tick) {
                return at(segment.begin + static_cast<double>(tick - lights.begin()));
            };
            drawHidden(m_svg, *begin, {x(begin), x(end), 0, ground}, HIDDEN);
            begin = end;
        }
    }

    void drawFlag(const Flag& flag) {
        const double x = at(flag.line->tick);
        const double y = MARGIN + LANE * static_cast<double>(flag.lane);
        m_svg.begin(flag.line->line + ", " + secondsText(m_waves, flag.line->tick));
        m_svg.line(x, y, x, m_bottom, FLAG, " stroke-dasharray=\"4 2\"");
        m_svg.path("M" + svgNumber(x) + " " + svgNumber(y) + "l8 5l-8 5z", FLAG);
        if (flag.lane < MOST_WORD_LANES)
            m_svg.text(x + 11, y + 9, flag.line->line, "start", FLAG);
        m_svg.end();
    }

    bool occurs(LedLight light) const {
        return occurs([&](const LedSegment& each) { return each.drive.light == light; });
    }
    template <class Test>
    bool occurs(Test test) const {
        return std::any_of(m_waves.leds.begin(), m_waves.leds.end(), [&](const LedWave& led) {
            return std::any_of(led.segments.begin(), led.segments.end(), test);
        });
    }

    /// What the legend explains: each kind of light that the picture has.
    std::vector<Sample> samplesOfLegend() const {
        const LedDrive steady{0, LedLight::STEADY, false};
        std::vector<Sample> samples;
        if (occurs(LedLight::STEADY))
            samples.push_back({"lit", steady, "11111", LedLight::NONE});
        if (occurs(LedLight::BLINK))
            samples.push_back({"blinks", {0, LedLight::BLINK, false}, "01101", LedLight::NONE});
        if (occurs(LedLight::FLASH))
            samples.push_back({"flash", {0, LedLight::FLASH, false}, "00100", LedLight::NONE});
        if (occurs(LedLight::ROLL))
            samples.push_back({"roll", {0, LedLight::ROLL, false}, "01001", LedLight::NONE});
        if (occurs([](const LedSegment& each) { return each.drive.isTimed; }))
            samples.push_back({"for a time", {0, LedLight::STEADY, true}, "11111", LedLight::NONE});
        if (occurs([](const LedSegment& each) { return !each.covers.empty(); }))
            samples.push_back({"hidden", {}, "00000", LedLight::STEADY});
        return samples;
    }

    /// Draws the legend from `top` down and returns where it ends.
    double drawLegend(Svg& svg, const std::vector<Sample>& samples, double width,
                      double top) const {
        double x = MARGIN, y = top;
        for (const Sample& sample : samples) {
            const double length = SAMPLE + 6 + LETTER * static_cast<double>(sample.text.size());
            if (x + length + MARGIN > width && x > MARGIN) {
                y += LEGEND_ROW;
                x = MARGIN;
            }
            const LedStretch stretch{x, x + SAMPLE,
                                     SAMPLE / static_cast<double>(sample.wave.size()),
                                     y + LAMP_HEIGHT + 2};
            svg.add("<g class=\"legend\">\n");
            svg.line(stretch.left, stretch.ground, stretch.right, stretch.ground, NAME);
            drawLight(svg, sample.drive, sample.wave, stretch, NAME);
            drawHidden(svg, sample.hidden, stretch, HIDDEN);
            svg.text(stretch.right + 6, stretch.ground - 5, sample.text, "start", AXIS);
            svg.add("</g>\n");
            x += length + 18;
        }
        return samples.empty() ? y : y + LEGEND_ROW + 4;
    }

    const LedWaves& m_waves;
    double m_left, m_plot, m_top, m_bottom;
    std::vector<Flag> m_flags;
    std::size_t m_lanes = 0;
    Svg m_svg;
};

} // namespace

std::string ledsToSvg(const LedWaves& given) {
    const LedWaves waves = printableWaves(given);
    return Picture(waves).draw();
}

} // namespace board
