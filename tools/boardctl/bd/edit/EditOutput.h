#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "descriptor/store/DescriptorStore.h"

namespace boardctl {

/// One line for each tag before and after a change: "- 3 Tag5 (5): 6f6e65".
void printChanges(std::ostream& out, const std::vector<board::TagChange>& changes);

/// What was done, for people.
void printOutcome(const std::string& path, const board::EditOutcome& outcome, bool isDryRun);

/// What was done, with the changes, for programs.
void printOutcomeAsJson(const std::string& path, const board::EditOutcome& outcome);

/// "; the old image is in FILE" if there is a backup; else empty.
std::string backupNote(const board::EditOutcome& outcome);

} // namespace boardctl
