#pragma once

#include <string>

namespace board {

/// `value` as text, with at most six digits.
std::string svgNumber(double value);

/// `text` with the special characters of XML escaped.
std::string xmlText(const std::string& text);

/// The source of a picture in SVG, written element by element. Lengths are in pixels, from the top
/// left corner.
class Svg {
public:
    /// `more` are further attributes, with a blank before each.
    void line(double x1, double y1, double x2, double y2, const std::string& color,
              const std::string& more = "");
    void rectangle(double x, double y, double width, double height, const std::string& fill,
                   const std::string& more = "");
    void circle(double x, double y, double radius, const std::string& fill,
                const std::string& more = "");
    void path(const std::string& steps, const std::string& fill, const std::string& more = "");
    /// `y` is the baseline of the letters.
    void text(double x, double y, const std::string& what, const std::string& anchor,
              const std::string& color);

    /// Everything until `end` belongs together, and a pointer over it shows `title`.
    void begin(const std::string& title);
    void end() { m_source += "</g>\n"; }

    void add(const std::string& source) { m_source += source; }
    const std::string& source() const { return m_source; }

private:
    std::string m_source;
};

} // namespace board
