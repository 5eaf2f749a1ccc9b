#pragma once

#include <optional>

#include <nlohmann/json.hpp>

namespace board {

/// The value in JSON; null if there is none.
template <class Value>
nlohmann::ordered_json orNull(const std::optional<Value>& value) {
    return value ? nlohmann::ordered_json(*value) : nlohmann::ordered_json(nullptr);
}

} // namespace board
