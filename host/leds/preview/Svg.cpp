#include "leds/preview/Svg.h"

#include "String.h"

namespace board {

std::string svgNumber(double value) {
    return String::format("%.6g", value).c_str();
}

std::string xmlText(const std::string& text) {
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

void Svg::line(double x1, double y1, double x2, double y2, const std::string& color,
               const std::string& more) {
    m_source += "<line x1=\"" + svgNumber(x1) + "\" y1=\"" + svgNumber(y1) + "\" x2=\"" +
                svgNumber(x2) + "\" y2=\"" + svgNumber(y2) + "\" stroke=\"" + color + "\"" + more +
                "/>\n";
}

void Svg::rectangle(double x, double y, double width, double height, const std::string& fill,
                    const std::string& more) {
    m_source += "<rect x=\"" + svgNumber(x) + "\" y=\"" + svgNumber(y) + "\" width=\"" +
                svgNumber(width) + "\" height=\"" + svgNumber(height) + "\" fill=\"" + fill + "\"" +
                more + "/>\n";
}

void Svg::circle(double x, double y, double radius, const std::string& fill,
                 const std::string& more) {
    m_source += "<circle cx=\"" + svgNumber(x) + "\" cy=\"" + svgNumber(y) + "\" r=\"" +
                svgNumber(radius) + "\" fill=\"" + fill + "\"" + more + "/>\n";
}

void Svg::path(const std::string& steps, const std::string& fill, const std::string& more) {
    m_source += "<path d=\"" + steps + "\" fill=\"" + fill + "\"" + more + "/>\n";
}

void Svg::text(double x, double y, const std::string& what, const std::string& anchor,
               const std::string& color) {
    m_source += "<text x=\"" + svgNumber(x) + "\" y=\"" + svgNumber(y) + "\" text-anchor=\"" +
                anchor + "\" fill=\"" + color + "\">" + xmlText(what) + "</text>\n";
}

void Svg::begin(const std::string& title) {
    m_source += "<g><title>" + xmlText(title) + "</title>\n";
}

} // namespace board
