#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "output/EventLines.h"
#include "program/Board.h"

namespace boardctl {

/// What a tour works with. `pause` waits, prints what happens meanwhile, and returns true if the
/// tour must end.
struct TourStage {
    const Board& board;
    EventLines& lines;
    bool takesCommands; ///< whether the LED service reads the pipe
    bool watchesButton;
    std::function<bool(std::chrono::milliseconds)> pause;
};

/// The working fans of the board, which a tour sets, each as "fan 'NAME'".
std::vector<std::string> tourFans(const Board& board);

/// Shows every subsystem of a board in about ten seconds, in plain words. Unless the board was made
/// for this call, leaves the sensor, the LEDs and the button alone. At the end, applies the
/// profile's end-of-host setting to the fans. Returns false if the tour ended early.
bool playTour(const TourStage& stage);

} // namespace boardctl
