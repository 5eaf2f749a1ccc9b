#include "LedDiagram.h"

#include <algorithm>
#include <vector>

#include "Columns.h"
#include "String.h"

namespace board {

namespace {

std::string number(double value) {
    return String::format("%.6g", value).c_str();
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

// --- text
// ---------------------------------------------------------------------------------------------------

constexpr unsigned TICKS_A_PIECE = 60;

/// A ruler with a figure every ten ticks.
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
                    std::to_string(std::uint64_t{line.tick} * waves.tickMs) + " ms: " + line.line + "\n";
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

// --- picture
// ------------------------------------------------------------------------------------------------

constexpr double ROW = 34;
constexpr double LAMP = 18; ///< height of a lit span
constexpr double LANE = 18; ///< height of a row of flags
constexpr double LETTER = 7.3;
constexpr double MARGIN = 16;
constexpr double MIN_PLOT = 320, MAX_PLOT = 1200;

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
            result += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
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
        m_top = MARGIN + LANE * static_cast<double>(m_laneEnds.size()) + 8;
        m_bottom = m_top + ROW * static_cast<double>(waves.leds.size());
    }

    std::string draw() {
        double width = m_left + m_plot + 2 * MARGIN; // half a figure of the axis
        for (const double end : m_laneEnds)
            width = std::max(width, end + MARGIN);
        const std::string size = number(width) + "\" height=\"" + number(m_bottom + 44) + "\"";
        m_svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + size + " viewBox=\"0 0 " +
                number(width) + " " + number(m_bottom + 44) +
                "\" font-family=\"monospace\" font-size=\"12\">\n"
                "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";
        drawAxis();
        for (std::size_t i = 0; i < m_waves.leds.size(); ++i)
            drawLed(m_waves.leds[i], m_top + ROW * static_cast<double>(i));
        for (const Flag& flag : m_flags)
            drawFlag(flag);
        return m_svg + "</svg>\n";
    }

private:
    struct Flag {
        const LedLine* line;
        std::size_t lane;
    };

    double at(double tick) const { return m_left + m_plot * tick / m_waves.ticks; }

    /// A flag goes into the first lane whose last one has ended.
    void placeFlags() {
        for (const LedLine& line : m_waves.lines) {
            if (line.tick >= m_waves.ticks)
                continue;
            const double begin = at(line.tick);
            std::size_t lane = 0;
            while (lane < m_laneEnds.size() && m_laneEnds[lane] > begin)
                ++lane;
            if (lane == m_laneEnds.size())
                m_laneEnds.push_back(0);
            m_laneEnds[lane] = begin + LETTER * static_cast<double>(columnsOf(line.line)) + 14;
            m_flags.push_back({&line, lane});
        }
    }

    void line(double x1, double y1, double x2, double y2, const char* colour) {
        m_svg += "<line x1=\"" + number(x1) + "\" y1=\"" + number(y1) + "\" x2=\"" + number(x2) + "\" y2=\"" +
                 number(y2) + "\" stroke=\"" + colour + "\"/>\n";
    }

    void text(double x, double y, const std::string& what, const char* more) {
        m_svg += "<text x=\"" + number(x) + "\" y=\"" + number(y) + "\" " + more + ">" + escaped(what) +
                 "</text>\n";
    }

    /// Time in milliseconds, with a line about every 80 units.
    void drawAxis() {
        const double whole = static_cast<double>(m_waves.ticks) * m_waves.tickMs;
        const double step = std::max(roundStep(whole * 80 / m_plot), static_cast<double>(m_waves.tickMs));
        for (int mark = 0; mark * step <= whole; ++mark) {
            const double ms = mark * step;
            const double x = at(ms / m_waves.tickMs);
            line(x, m_top, x, m_bottom + 6, "#d8dde3");
            text(x, m_bottom + 20, number(ms), "text-anchor=\"middle\" fill=\"#56606b\"");
        }
        text(m_left + m_plot / 2, m_bottom + 37,
             "milliseconds, a tick is " + std::to_string(m_waves.tickMs) + " ms",
             "text-anchor=\"middle\" fill=\"#56606b\"");
    }

    void drawLed(const LedWave& led, double y) {
        const double middle = y + ROW / 2;
        text(m_left - MARGIN, middle + 4, led.name, "text-anchor=\"end\" fill=\"#1d2329\"");
        line(m_left, middle, m_left + m_plot, middle, "#9aa5b1");
        for (std::size_t begin = led.wave.find('1'); begin != std::string::npos;) {
            const std::size_t end = std::min(led.wave.find('0', begin), led.wave.size());
            const double x = at(static_cast<double>(begin));
            m_svg += "<rect x=\"" + number(x) + "\" y=\"" + number(middle - LAMP / 2) + "\" width=\"" +
                     number(at(static_cast<double>(end)) - x) + "\" height=\"" + number(LAMP) +
                     "\" rx=\"2\" fill=\"#1f9d55\"/>\n";
            begin = led.wave.find('1', end);
        }
    }

    void drawFlag(const Flag& flag) {
        const double x = at(flag.line->tick);
        const double y = MARGIN + LANE * static_cast<double>(flag.lane);
        line(x, y, x, m_bottom, "#c0392b");
        m_svg += "<path d=\"M" + number(x) + " " + number(y) + "l8 5l-8 5z\" fill=\"#c0392b\"/>\n";
        text(x + 11, y + 9, flag.line->line, "fill=\"#c0392b\"");
    }

    const LedWaves& m_waves;
    double m_left, m_plot, m_top, m_bottom;
    std::vector<Flag> m_flags;
    std::vector<double> m_laneEnds;
    std::string m_svg;
};

} // namespace

std::string ledsToText(const LedWaves& waves) {
    std::string text;
    for (unsigned begin = 0; begin < waves.ticks; begin += TICKS_A_PIECE)
        text += (begin ? "\n" : "") + piece(waves, begin, std::min(waves.ticks, begin + TICKS_A_PIECE));
    return text;
}

std::string ledsToSvg(const LedWaves& waves) {
    return Picture(waves).draw();
}

} // namespace board
