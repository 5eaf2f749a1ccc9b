#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "simulation/SimulatedBoard.h"
#include "snapshot/Snapshot.h"

namespace board {

/// The value of a snapshot's member "snapshot". It changes when the meaning of other members
/// changes.
constexpr int SNAPSHOT_VERSION = 1;

/// The members "profile" (`{"path":..., "text":...}`) and "files" of a snapshot. An element of
/// "files" has "key", "path" and the content: "text", or "hex" if the content is not plain text. If
/// the file could not be read, it has "error" instead of the content.
///
/// Throws Error if the profile can't be read again.
nlohmann::ordered_json toJson(const std::string& profilePath,
                              const std::vector<SnapshotFile>& files);

/// Makes a simulated board in `directory`, which must be empty or not exist, from the text of a
/// snapshot. It has the original board's profile, but the profile names new files with the content
/// of the original ones. A file that could not be read is missing. Each LED of the sequencer is a
/// pipe, and so is the button, as on every simulated board.
///
/// Throws Error if the text is not a snapshot; `source` names the text in the message. Also throws
/// what SimulatedBoard::create throws.
SimulatedBoard createFromSnapshot(const std::string& directory, const std::string& text,
                                  const std::string& source);

} // namespace board
