#include "sequencer/LedTables.h"

#include "base/Error.h"

namespace boardctl {

const board::LedSequencerProfile& ledTablesOf(const BoardProfile& board) {
    if (!board.profile().ledService)
        throw board::Error(board.profilePath() +
                           ": the board has no LED tables (expected a table [leds])");
    return *board.profile().ledService;
}

} // namespace boardctl
