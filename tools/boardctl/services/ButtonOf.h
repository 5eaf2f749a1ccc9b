#pragma once

#include "base/Error.h"
#include "program/Board.h"

namespace boardctl {

/// The button of the board. Throws board::Error if it has none.
inline const board::NamedPath& buttonOf(const BoardProfile& board) {
    if (!board.profile().button)
        throw board::Error(board.profilePath() +
                           ": the board has no button (expected a table [button])");
    return *board.profile().button;
}

} // namespace boardctl
