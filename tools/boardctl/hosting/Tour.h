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

/// Shows every subsystem of a board in about ten seconds, in plain words. Steps the fans and then
/// applies `on_exit` of the profile to them. Leaves the sensor, the LEDs and the button alone
/// unless the board was made for this call. Returns false if the tour ended early.
bool playTour(const TourStage& stage);

} // namespace boardctl
