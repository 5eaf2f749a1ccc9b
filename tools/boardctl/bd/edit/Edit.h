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

/// `force` explains what --force does.
void addStoreOptions(CLI::App& command, EditWords& words, const char* force);
void addEditOptions(CLI::App& command, EditWords& words);

/// Edits the image or the board's device with `step`: shows the changes, asks before it writes to a
/// device, then writes. Returns the exit status.
int edit(const Options& options, const EditWords& words,
         const std::function<void(board::DescriptorEdit&)>& step);

/// What such a command does with the chosen descriptor. Throws board::Error.
using Storing = std::function<void(const board::DescriptorSource&, const board::StoreManner&,
                                   const board::Confirm&, board::StoreOutcome&)>;
/// Called with the result, before it is printed; `error` is empty if all went well. What it throws
/// is reported too.
using Recording = std::function<void(const std::string& path, const board::StoreOutcome&,
                                     const std::string& error)>;

/// Runs `storing`: chooses the descriptor, asks before a device is written, prints what was done or
/// why not. Returns the exit status.
int store(const Options& options, const EditWords& words, bool isEdit, const Storing& storing,
          const Recording& recording);

} // namespace boardctl
