#include "leds/LedDiagram.h"

#include <algorithm>
#include <vector>

#include "String.h"
#include "base/Text.h"

namespace board {

namespace {

std::string number(double value) {
    return String::format("%.6g", value).c_str();
}

/// The waves with names and lines that a terminal and an XML parser can show.
LedWaves printableWaves(LedWaves waves) {
    for (LedWave& led : waves.leds)
        led.name = printable(led.name);
    for (LedLine& line : waves.lines)
        line.line = printable(line.line);
    return waves;
}

std::size_t longestName(const LedWaves& waves) {
    std::size_t length = 0;
    for (const LedWave& led : waves.leds)
        length = std::max(length, columnsOf(led.name));
    return length;
}

std::string padded(std::string text, std::size_t width) {
    const std::size_t columns = columnsOf(text);
    if (columns < width)
        text.append(width - columns, ' ');
    return text;
}

// --- text ---

constexpr unsigned TICKS_A_PIECE = 60;

/// A ruler with a number every ten ticks.
std::string ruler(unsigned begin, unsigned end, std::uint64_t unit) {
    std::string line;
    for (unsigned tick = begin; tick < end; tick += 10)
        line = padded(line, tick - begin) + (line.size() > tick - begin ? " " : "") +
               std::to_string(tick * unit);
    return line;
}

std::string piece(const LedWaves& waves, unsigned begin, unsigned end) {
    const std::size_t width = std::max<std::size_t>(longestName(waves), 4) + 2;
    std::string text = padded("tick", width) + ruler(begin, end, 1) + "\n" + padded("ms", width) +
                       ruler(begin, end, waves.tickMs) + "\n";
    std::string marks, list;
    for (const LedLine& line : waves.lines)
        if (line.tick >= begin && line.tick < end) {
            marks = padded(marks, line.tick - begin).substr(0, line.tick - begin) + "v";
            list += "  v tick " + std::to_string(line.tick) + ", " +
                    std::to_string(std::uint64_t{line.tick} * waves.tickMs) + " ms: " + line.line +
                    "\n";
        }
    if (!marks.empty())
        text += padded("", width) + marks + "\n";
    for (const LedWave& led : waves.leds) {
        std::string row = led.wave.substr(begin, end - begin);
        std::replace(row.begin(), row.end(), '1', '#');
        std::replace(row.begin(), row.end(), '0', '.');
        text += padded(led.name, width) + row + "\n";
    }
    return text + list;
}

// --- picture ---

// If the picture fills the width of an A4 page, the letters are still seven points high. In black
// and white, the LEDs are the darkest part.
constexpr double ROW = 30;
constexpr double LAMP = 18; ///< height of the block of a lit LED
constexpr double LANE = 18; ///< height of a row of flags
constexpr double LETTER = 7.3;
constexpr double MARGIN = 14;
constexpr double MIN_PLOT = 320, MAX_PLOT = 660;
constexpr double FIGURE = 44;  ///< minimum distance between two numbers on the axis
constexpr double MIN_TICK = 4; ///< minimum distance between two tick marks
constexpr double BELOW = 46;   ///< height of the axis with its numbers and unit
constexpr double MS_A_SECOND = 1000;

constexpr char LIT[] = "#0b5a34", PALE[] = "#f3f5f7", GRID[] = "#cfd5db", AXIS[] = "#5b6570",
               NAME[] = "#15191d", FLAG[] = "#b3261e";

std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text)
        switch (c) {
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '&':
            result += "&amp;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result += c;
        }
    return result;
}

/// The smallest of 1, 2, 5, 10, 20, ... that is not below `least`.
double roundStep(double least) {
    double step = 1;
    for (int i = 0; step < least; ++i)
        step *= i % 3 == 1 ? 2.5 : 2;
    return step;
}

class Picture {
public:
    explicit Picture(const LedWaves& waves) : m_waves(waves) {
        m_left = 2 * MARGIN + LETTER * static_cast<double>(longestName(waves));
        m_plot = std::clamp(waves.ticks * 16.0, MIN_PLOT, MAX_PLOT);
        placeFlags();
        m_top = MARGIN + LANE * static_cast<double>(m_lanes) + 4;
        m_bottom = m_top + ROW * static_cast<double>(waves.leds.size());
    }

    std::string draw() {
        double width = m_left + m_plot + 2 * MARGIN; // room for half of a number on the axis
        for (const Flag& flag : m_flags)
            width = std::max(width, flag.end + MARGIN);
        const std::string w = number(width), h = number(m_bottom + BELOW);
        m_svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + w + "\" height=\"" + h +
                "\" viewBox=\"0 0 " + w + " " + h +
                "\" font-family=\"monospace\" font-size=\"12\">\n";
        rectangle(0, 0, width, m_bottom + BELOW, "#ffffff");
        for (std::size_t i = 0; i < m_waves.leds.size(); i += 2) // guides the eye along a row
            rectangle(MARGIN / 2, rowAt(i), m_left + m_plot - MARGIN / 2, ROW, PALE);
        drawAxis();
        for (const Flag& flag : m_flags)
            drawFlag(flag);
        for (std::size_t i = 0; i < m_waves.leds.size(); ++i)
            drawLed(m_waves.leds[i], rowAt(i));
        return m_svg + "</svg>\n";
    }

private:
    struct Flag {
        const LedLine* line;
        std::size_t lane;
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
            m_flags.push_back(
                {&line, lane, begin + LETTER * static_cast<double>(columnsOf(line.line)) + 14});
            m_lanes = std::max(m_lanes, lane + 1);
        }
    }

    void line(double x1, double y1, double x2, double y2, const char* color,
              const char* more = "") {
        m_svg += "<line x1=\"" + number(x1) + "\" y1=\"" + number(y1) + "\" x2=\"" + number(x2) +
                 "\" y2=\"" + number(y2) + "\" stroke=\"" + color + "\"" + more + "/>\n";
    }

    void rectangle(double x, double y, double width, double height, const char* color) {
        m_svg += "<rect x=\"" + number(x) + "\" y=\"" + number(y) + "\" width=\"" + number(width) +
                 "\" height=\"" + number(height) + "\" fill=\"" + color + "\"/>\n";
    }

    void text(double x, double y, const std::string& what, const char* anchor, const char* color) {
        m_svg += "<text x=\"" + number(x) + "\" y=\"" + number(y) + "\" text-anchor=\"" + anchor +
                 "\" fill=\"" + color + "\">" + escaped(what) + "</text>\n";
    }

    /// Time in seconds, with a short mark for each tick if there is room.
    void drawAxis() {
        const double whole = static_cast<double>(m_waves.ticks) * m_waves.tickMs;
        const double step =
            std::max(roundStep(whole * FIGURE / m_plot), static_cast<double>(m_waves.tickMs));
        for (int mark = 0; mark * step <= whole; ++mark) {
            const double ms = mark * step;
            const double x = at(ms / m_waves.tickMs);
            line(x, m_top, x, m_bottom + 7, GRID);
            text(x, m_bottom + 21, number(ms / MS_A_SECOND), "middle", AXIS);
        }
        line(m_left, m_bottom, m_left + m_plot, m_bottom, AXIS);
        for (unsigned tick = 0; m_plot >= MIN_TICK * m_waves.ticks && tick <= m_waves.ticks; ++tick)
            line(at(tick), m_bottom, at(tick), m_bottom + 3, AXIS);
        text(m_left + m_plot / 2, m_bottom + 38,
             "seconds, a tick is " + number(m_waves.tickMs / MS_A_SECOND) + " s", "middle", AXIS);
    }

    /// A line, with a block on it wherever the LED is lit.
    void drawLed(const LedWave& led, double y) {
        const double ground = y + (ROW + LAMP) / 2;
        text(m_left - MARGIN / 2, ground - 5, led.name, "end", NAME);
        line(m_left, ground, m_left + m_plot, ground, LIT);
        for (std::size_t begin = led.wave.find('1'); begin != std::string::npos;) {
            const std::size_t end = std::min(led.wave.find('0', begin), led.wave.size());
            const double x = at(static_cast<double>(begin));
            rectangle(x, ground - LAMP, at(static_cast<double>(end)) - x, LAMP, LIT);
            begin = led.wave.find('1', end);
        }
    }

    void drawFlag(const Flag& flag) {
        const double x = at(flag.line->tick);
        const double y = MARGIN + LANE * static_cast<double>(flag.lane);
        line(x, y, x, m_bottom, FLAG, " stroke-dasharray=\"4 2\"");
        m_svg +=
            "<path d=\"M" + number(x) + " " + number(y) + "l8 5l-8 5z\" fill=\"" + FLAG + "\"/>\n";
        text(x + 11, y + 9, flag.line->line, "start", FLAG);
    }

    const LedWaves& m_waves;
    double m_left, m_plot, m_top, m_bottom;
    std::vector<Flag> m_flags;
    std::size_t m_lanes = 0;
    std::string m_svg;
};

} // namespace

std::string ledsToText(const LedWaves& given) {
    const LedWaves waves = printableWaves(given);
    std::string text;
    for (unsigned begin = 0; begin < waves.ticks; begin += TICKS_A_PIECE)
        text +=
            (begin ? "\n" : "") + piece(waves, begin, std::min(waves.ticks, begin + TICKS_A_PIECE));
    return text;
}

std::string ledsToSvg(const LedWaves& given) {
    const LedWaves waves = printableWaves(given);
    return Picture(waves).draw();
}

} // namespace board
