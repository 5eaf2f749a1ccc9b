#pragma once

#include <chrono>
#include <functional>

#include "output/EventLines.h"
#include "program/Board.h"

namespace boardctl {

/// What a tour works with. `pause` shows what happens meanwhile and is true where the tour shall
/// break off.
struct TourStage {
    const Board& board;
    EventLines& lines;
    bool takesCommands; ///< whether the LED service reads the pipe
    bool watchesButton;
    std::function<bool(std::chrono::milliseconds)> pause;
};

/// Shows every subsystem of a board in about ten seconds, in plain words. Of a real board only the
/// fans are stepped, and given back their speed; its sensor, LEDs and button are no toys. False
/// where it was broken off.
bool playTour(const TourStage& stage);

} // namespace boardctl
