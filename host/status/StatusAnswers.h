#pragma once

#include <cstdint>
#include <string>

#include <nlohmann/json.hpp>

namespace board {

/// What a host reports about itself. The names and types in the JSON are those of
/// org.boarddrivers.Host.varlink. The status server calls these functions on its own thread while
/// it answers a client, so they must not wait for a device. A std::exception becomes the reply to
/// that call and has no other effect.
class StatusAnswers {
public:
    virtual ~StatusAnswers() = default;

    /// The object that the method Status returns.
    virtual nlohmann::ordered_json status() const = 0;
    /// An array of all LEDs of the sequencer, each of the type Led; empty without a sequencer.
    virtual nlohmann::ordered_json leds() const = 0;
    /// The LEDs of the sequencer that are lit now, as bits; 0 without a sequencer.
    virtual std::uint32_t lit() const = 0;
    /// The object that the method Descriptor returns.
    virtual nlohmann::ordered_json descriptor() const = 0;
    /// The text that the method Metrics returns.
    virtual std::string metrics() const = 0;
};

} // namespace board
