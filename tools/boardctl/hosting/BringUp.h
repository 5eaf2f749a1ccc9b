#pragma once

#include "base/Result.h"
#include "board/Firmware.h"
#include "board/Services.h"
#include "output/EventLines.h"
#include "program/Board.h"
#include "watch/Watch.h"

namespace boardctl {

/// Prints what a host finds and starts on its board.
class BringUp {
public:
    /// All arguments must outlive the object.
    BringUp(const Board& board, const board::Watch& watch, EventLines& lines)
        : m_board(board), m_watch(watch), m_lines(lines) {}

    /// Prints what each driver was connected to, and the faults of the devices that the watch does
    /// not observe. The watch reports the others.
    void showDevices() const;
    /// Loads the descriptor, determines the VoIP capacity and shows the whole report. Call it after
    /// the watch's first look, which tells which devices are gone.
    void showReport() const;
    void showFirmware(const board::Result<board::FirmwareInfo>& firmware) const;
    void showServices(const board::Services& services) const;

private:
    void showDevice(const board::Device& device) const;

    const Board& m_board;
    const board::Watch& m_watch;
    EventLines& m_lines;
};

} // namespace boardctl
