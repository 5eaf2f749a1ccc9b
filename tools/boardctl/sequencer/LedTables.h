#pragma once

#include "program/Board.h"

namespace boardctl {

/// The LED tables of the board. Throws board::Error if it has none.
const board::LedSequencerProfile& ledTablesOf(const BoardProfile& board);

} // namespace boardctl
