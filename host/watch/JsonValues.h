#pragma once

#include <cmath>
#include <optional>

#include <nlohmann/json.hpp>

/// Values as they are in JSON.
namespace board {

/// The value; null if there is none.
template <class Value>
nlohmann::ordered_json orNull(const std::optional<Value>& value) {
    return value ? nlohmann::ordered_json(*value) : nlohmann::ordered_json(nullptr);
}

/// A temperature in degrees, rounded to thousandths, because sensors measure no further digits.
inline double roundedCelsius(double celsius) {
    constexpr double THOUSANDTHS = 1000;
    return std::round(celsius * THOUSANDTHS) / THOUSANDTHS;
}

} // namespace board
