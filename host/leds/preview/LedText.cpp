#include "leds/preview/LedText.h"

#include <algorithm>
#include <tuple>

#include "base/Text.h"
#include "leds/preview/LedGlyphs.h"
#include "leds/preview/Svg.h"

namespace board {

namespace {

std::string padded(std::string text, std::size_t width) {
    const std::size_t columns = columnsOf(text);
    if (columns < width)
        text.append(width - columns, ' ');
    return text;
}

std::string spanText(const LedWaves& waves, unsigned begin, unsigned end) {
    return ", from " + secondsText(waves, begin) + " to " + secondsText(waves, end);
}

/// The covers, sorted by row and time. Covers of one row that touch are joined.
std::vector<LedCover> joined(std::vector<LedCover> covers) {
    std::sort(covers.begin(), covers.end(), [](const LedCover& a, const LedCover& b) {
        return std::tie(a.drive.row, a.begin) < std::tie(b.drive.row, b.begin);
    });
    std::vector<LedCover> result;
    for (const LedCover& cover : covers)
        if (!result.empty() && result.back().drive == cover.drive &&
            cover.begin <= result.back().end)
            result.back().end = std::max(result.back().end, cover.end);
        else
            result.push_back(cover);
    return result;
}

/// A ruler with a number every ten ticks.
std::string ruler(unsigned begin, unsigned end, std::uint64_t unit) {
    std::string line;
    for (unsigned tick = begin; tick < end; tick += 10)
        line = padded(line, tick - begin) + (line.size() > tick - begin ? " " : "") +
               std::to_string(tick * unit);
    return line;
}

} // namespace

std::size_t longestName(const LedWaves& waves) {
    std::size_t length = 0;
    for (const LedWave& led : waves.leds)
        length = std::max(length, columnsOf(led.name));
    return length;
}

LedWaves printableWaves(LedWaves waves) {
    for (LedWave& led : waves.leds)
        led.name = printable(led.name);
    for (LedLine& line : waves.lines)
        line.line = printable(line.line);
    for (LedSequencerProfile::Command& row : waves.rows)
        for (std::string* const text : {&row.word1, &row.word2, &row.place})
            *text = printable(*text);
    return waves;
}

std::string secondsText(const LedWaves& waves, unsigned tick) {
    constexpr double MS_PER_SECOND = 1000;
    return svgNumber(static_cast<double>(tick) * waves.tickMs / MS_PER_SECOND) + " s";
}

std::string segmentText(const LedWaves& waves, const LedSegment& segment) {
    const auto what = [&](const LedDrive& drive) {
        return commandOf(waves.rows[drive.row]) + ": " + lightText(drive);
    };
    std::string text = what(segment.drive) + spanText(waves, segment.begin, segment.end) + "\n" +
                       waves.rows[segment.drive.row].place;
    for (const LedCover& cover : joined(segment.covers)) {
        text += "\nhides " + what(cover.drive);
        if (cover.begin > segment.begin || cover.end < segment.end)
            text += spanText(waves, cover.begin, cover.end);
    }
    return text;
}

std::string cutTo(std::size_t columns, const std::string& text) {
    if (columnsOf(text) <= columns)
        return text;
    std::string cut;
    for (const char c : text) {
        const bool isFirstByte = (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
        if (isFirstByte && --columns == 0)
            break;
        cut += c;
    }
    return cut + "\u2026";
}

LedSections::LedSections(const LedWaves& waves)
    : m_waves(printableWaves(waves)),
      m_width(std::max<std::size_t>(longestName(m_waves), sizeof "tick" - 1) + 2) {}

std::string LedSections::next(std::vector<std::string> waves) {
    const unsigned begin = m_begin, end = std::min(m_waves.ticks, begin + TICKS);
    std::string text = (begin > 0 ? "\n" : "") + padded("tick", m_width) + ruler(begin, end, 1) +
                       "\n" + padded("ms", m_width) + ruler(begin, end, m_waves.tickMs) + "\n";
    std::string marks, list;
    for (; m_line < m_waves.lines.size() && m_waves.lines[m_line].tick < end; ++m_line) {
        const unsigned place = m_waves.lines[m_line].tick - begin;
        marks = padded(marks, place).substr(0, place) + "v";
        list += "  v " + lineText(m_waves, m_waves.lines[m_line]) + "\n";
    }
    if (!marks.empty())
        text += padded("", m_width) + marks + "\n";
    for (std::size_t led = 0; led < waves.size(); ++led) {
        std::replace(waves[led].begin(), waves[led].end(), '1', '#');
        std::replace(waves[led].begin(), waves[led].end(), '0', '.');
        text += padded(m_waves.leds[led].name, m_width) + waves[led] + "\n";
    }
    m_begin = end;
    return text + list;
}

std::string tickText(const LedWaves& waves, unsigned tick) {
    return "tick " + std::to_string(tick) + ", " +
           std::to_string(std::uint64_t{tick} * waves.tickMs) + " ms:";
}

std::string lineText(const LedWaves& waves, const LedLine& line) {
    return tickText(waves, line.tick) + " " + printable(line.line);
}

std::string momentText(const LedWaves& waves, unsigned tick) {
    std::string text = tickText(waves, tick);
    for (const LedWave& led : waves.leds) {
        text += led.wave[tick] == '1' ? " [#] " : " [ ] ";
        text += printable(led.name);
    }
    return text;
}

bool isChange(const LedWaves& waves, unsigned tick) {
    return tick == 0 || std::any_of(waves.leds.begin(), waves.leds.end(), [&](const LedWave& led) {
               return led.wave[tick] != led.wave[tick - 1];
           });
}

} // namespace board
