#include "feed/History.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

#include "client/UtcText.h"

using nlohmann::ordered_json;

namespace boardweb {

namespace {

constexpr const char* LEVELS[] = {"off", "low", "high", "full"};

/// The member as text; empty if it is not a text.
std::string wordOf(const ordered_json& object, const char* key) {
    const auto member = object.find(key);
    return member != object.end() && member->is_string() ? member->get<std::string>() : "";
}

void append(std::string& text, float value) {
    char digits[32];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), value).ptr;
    text += std::isfinite(value) ? std::string(digits, end) : "null";
}

std::string quoted(const std::string& text) {
    return ordered_json(text).dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

} // namespace

void History::add(const ordered_json& status, const TYTime& end) {
    const std::lock_guard lock(m_mutex);
    for (Series& series : m_series)
        series.values[m_place] = UNKNOWN;
    const auto devices = status.is_object() ? status.find("devices") : status.end();
    if (devices != status.end() && devices->is_array())
        for (const ordered_json& device : *devices)
            if (device.is_object())
                note(device);
    m_place = (m_place + 1) % MOST_VALUES;
    m_count = std::min(m_count + 1, MOST_VALUES);
    m_end = board::utcText(end);
    // Devices without a value in the last hour, such as those of a former board, are forgotten.
    m_series.erase(std::remove_if(m_series.begin(), m_series.end(),
                                  [](const Series& series) {
                                      return std::none_of(series.values.begin(),
                                                          series.values.end(),
                                                          [](float v) { return std::isfinite(v); });
                                  }),
                   m_series.end());
    m_text.reset();
}

History::Series* History::find(const std::string& device, const std::string& kind) {
    const auto found = std::find_if(m_series.begin(), m_series.end(), [&](const Series& series) {
        return series.device == device && series.kind == kind;
    });
    if (found != m_series.end())
        return &*found;
    if (m_series.size() == MOST_SERIES)
        return nullptr;
    m_series.push_back({device, kind, kind == "fan" ? "level" : "celsius",
                        std::vector<float>(MOST_VALUES, UNKNOWN)});
    return &m_series.back();
}

void History::note(const ordered_json& device) {
    const std::string kind = wordOf(device, "kind"), unit = wordOf(device, "unit");
    if (kind != "thermal" && kind != "fan")
        return;
    Series* const series = find(wordOf(device, "name"), kind);
    if (!series)
        return;
    const auto value = device.find("value");
    if (unit == (kind == "fan" ? "rpm" : "celsius") && value != device.end() &&
        value->is_number()) {
        if (series->unit != unit) // the tachometer could not be read until now
            std::fill(series->values.begin(), series->values.end(), UNKNOWN);
        series->unit = unit;
        series->values[m_place] = value->get<float>();
    } else if (series->unit == "level") {
        const auto* const level =
            std::find(std::begin(LEVELS), std::end(LEVELS), wordOf(device, "level"));
        if (level != std::end(LEVELS))
            series->values[m_place] = static_cast<float>(level - std::begin(LEVELS));
    }
}

std::shared_ptr<const std::string> History::text() const {
    const std::lock_guard lock(m_mutex);
    if (m_text)
        return m_text;
    std::string text = R"({"period_s":)" + std::to_string(PERIOD.count()) + R"(,"end":)";
    text += m_end.empty() ? "null" : quoted(m_end);
    text += R"(,"series":[)";
    const char* separator = "";
    for (const Series& series : m_series) {
        text += separator;
        text += R"({"device":)" + quoted(series.device) + R"(,"kind":")" + series.kind;
        text += R"(","unit":")" + series.unit + R"(","values":[)";
        for (std::size_t i = 0; i < m_count; ++i) {
            if (i != 0)
                text += ',';
            append(text, series.values[(m_place + MOST_VALUES - m_count + i) % MOST_VALUES]);
        }
        text += "]}";
        separator = ",";
    }
    text += "]}";
    m_text = std::make_shared<const std::string>(std::move(text));
    return m_text;
}

} // namespace boardweb
