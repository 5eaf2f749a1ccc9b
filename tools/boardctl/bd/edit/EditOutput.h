#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "descriptor/store/DescriptorStore.h"

namespace boardctl {

/// For each change, prints the old tag, "- 3 Tag5 (5): 6f6e65", and the new one, "+ 3 ...", as far
/// as they exist.
void printChanges(std::ostream& out, const std::vector<board::TagChange>& changes);

/// Prints for people what was done.
void printOutcome(const std::string& path, const board::StoreOutcome& outcome);

/// The result's name for programs: "unchanged", "written", "restored", "failed" or "declined".
const char* nameOf(board::StoreResult result);
/// The SHA-256 of the bytes; null if they are not known.
nlohmann::ordered_json checksumOf(const std::optional<std::string>& bytes);

/// Prints what was done as JSON: with the changes of an edit, or with the size and checksums of a
/// whole image that is written. `error` is empty if all went well.
void printOutcomeAsJson(const std::string& path, const board::StoreOutcome& outcome, bool isEdit,
                        const std::string& error);

/// "; the old image is in FILE" if there is a backup; else empty.
std::string backupNote(const board::StoreOutcome& outcome);

/// "7 tags in 74 bytes".
std::string sizeOf(const std::string& image);

} // namespace boardctl
