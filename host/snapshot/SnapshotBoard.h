#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "simulation/SimulatedBoard.h"
#include "snapshot/Snapshot.h"

namespace board {

/// The member "snapshot" of a snapshot. It changes when the meaning of other members changes.
constexpr int SNAPSHOT_VERSION = 1;

/// The members "profile" (`{"path":..., "text":...}`) and "files" of a snapshot. An element of
/// "files" has "key" and "path", and either "text", or "hex" if the content is not plain text, or
/// "error" if it could not be read.
///
/// Throws Error if the profile can't be read again.
nlohmann::ordered_json toJson(const std::string& profilePath,
                              const std::vector<SnapshotFile>& files);

/// Makes a simulated board in `directory`, which must be empty or not exist, from the text of a
/// snapshot: the same profile with files of its own, which hold what the board's files held. A file
/// that could not be read is missing here too. Each LED of the sequencer and the button is a pipe,
/// as in every simulated board.
///
/// Throws Error if the text is not a snapshot; `source` names the text in the message. Also throws
/// what SimulatedBoard::create throws.
SimulatedBoard createFromSnapshot(const std::string& directory, const std::string& text,
                                  const std::string& source);

} // namespace board
