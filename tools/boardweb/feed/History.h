#pragma once

#include <chrono>
#include <cstddef>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "TYTime.h"

namespace boardweb {

/// The values of a board's sensors and fans during the last hour. Can be used on any thread.
class History {
public:
    static constexpr std::chrono::seconds PERIOD{5};
    static constexpr std::size_t MOST_VALUES = 720;
    static constexpr std::size_t MOST_SERIES = 32; ///< further devices are left out

    /// Adds the devices' values at the calendar time `end`. `status` is a host's reply to the call
    /// Status, or null if no host answered.
    void add(const nlohmann::ordered_json& status, const TYTime& end);

    /// {"period_s":5,"end":"...","series":[{"device","kind","unit","values":[...]}]}: the oldest
    /// value first, one per period, the last one taken at `end`. An unknown value is null.
    /// "unit" is celsius for a sensor; for a fan it is rpm, or "level" if the fan has no
    /// tachometer: off 0, low 1, high 2, full 3.
    std::shared_ptr<const std::string> text() const;

private:
    static constexpr float UNKNOWN = std::numeric_limits<float>::quiet_NaN();

    struct Series {
        std::string device, kind, unit;
        std::vector<float> values; ///< MOST_VALUES of them, in a ring
    };
    void note(const nlohmann::ordered_json& device);
    Series* find(const std::string& device, const std::string& kind);

    mutable std::mutex m_mutex;
    std::vector<Series> m_series;
    std::size_t m_place = 0; ///< index at which each ring gets its next value
    std::size_t m_count = 0; ///< the number of values in each ring
    std::string m_end;
    mutable std::shared_ptr<const std::string> m_text; ///< null if it has to be made
};

} // namespace boardweb
