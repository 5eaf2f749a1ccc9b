#pragma once

#include <functional>
#include <memory>
#include <string>

#include "descriptor/DescriptorSource.h"
#include "program/Board.h"
#include "program/Options.h"

namespace boardctl {

/// How long the commands wait for a lock: the value of --wait, or ten seconds. A message tells
/// which process they wait for.
board::LockWait lockWait(const Options& options);

/// The descriptor that a command works on.
class BdSource {
public:
    /// Chooses the image file `image` (STANDARD_STREAM: standard input) or, if `image` is empty,
    /// the board's device. Does not open the board's other devices. Throws board::Error if the
    /// board's device can't be read.
    BdSource(const Options& options, const std::string& image);

    const board::DescriptorSource& source() const { return m_source; }
    /// Whether the image belongs to a simulated board that is removed after the command.
    bool isScratch() const { return m_board && m_board->scratch(); }

private:
    const std::unique_ptr<BoardProfile> m_board; ///< null for an image file; its destructor removes
                                                 ///< the board that --sim made
    board::DescriptorSource m_source;
};

/// Loads the image that a command's words choose and passes it to `print`, which returns the exit
/// status. A corrupt image is passed too, with the tags before the fault; if `print` then returns
/// DONE, the status is FAILED.
int printImage(const Options& options, const std::string& image,
               const std::function<int(const board::TagImage&)>& print);

} // namespace boardctl
