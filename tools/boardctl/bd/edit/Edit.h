#pragma once

#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "descriptor/TagWords.h"
#include "descriptor/store/DescriptorStore.h"
#include "program/Options.h"

/// What the commands that edit a descriptor have in common.
namespace boardctl {

struct EditWords {
    std::string image; ///< empty: the board's descriptor
    board::StoreManner manner;
    bool yes = false;
    bool quiet = false;
};

/// `force` is the help text of --force.
void addStoreOptions(CLI::App& command, EditWords& words, const char* force);
void addEditOptions(CLI::App& command, EditWords& words);

/// Edits the image or the board's device with `step`: shows the changes, asks before it writes to a
/// device, then writes. Returns the exit status.
int edit(const Options& options, const EditWords& words,
         const std::function<void(board::DescriptorEdit&)>& step);

/// Edits or writes the chosen descriptor and sets the outcome. Throws board::Error.
using Storing = std::function<void(const board::DescriptorSource&, const board::StoreManner&,
                                   const board::Confirm&, board::StoreOutcome&)>;
/// Called with the result before it is printed; `error` is empty if all went well. A board::Error
/// that the call throws is reported too.
using Recording = std::function<void(const std::string& path, const board::StoreOutcome&,
                                     const std::string& error)>;

/// Chooses the descriptor, runs `storing` on it, asks before a device is written, and prints what
/// was done or why nothing was. Returns the exit status.
int store(const Options& options, const EditWords& words, bool isEdit, const Storing& storing,
          const Recording& recording);

} // namespace boardctl
