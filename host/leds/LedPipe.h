#pragma once

#include <optional>
#include <string>

#include <sys/types.h>

#include "base/Error.h"
#include "base/FileDescriptor.h"
#include "base/files/HostLock.h"

namespace board {

/// The named pipe from which the LED sequencer reads its command lines.
constexpr char LED_PIPE[] = "/tmp/evt.fifo";

/// Another service reads the pipe.
struct LedPipeInUse : Error {
    using Error::Error;
};

/// The right to read the pipe. Only one sequencer on a machine can have it, because two would each
/// get only some of the lines.
class LedPipeClaim {
public:
    /// Creates the pipe if it is missing. Only its owner may read it, because a second reader would
    /// take lines away. With a `group`, the owner and that group may write. Without a group, the
    /// umask decides who may write to a new pipe, and an existing pipe keeps its writers. If others
    /// may read a pipe of this user, takes that right away. If another user has already opened the
    /// pipe for reading, replaces it.
    ///
    /// Throws LedPipeInUse if another service reads the pipe, or if an unknown program reads it and
    /// this user can't replace it. Throws Error if the path leads to something other than a pipe;
    /// if the pipe belongs to neither root nor this user; if root owns it, its mode or group is
    /// wrong and this user is not root; if the mode of its folder lets others replace it; or if it
    /// can't be created, opened or changed.
    explicit LedPipeClaim(const std::string& group = "");

    /// Why the path no longer leads to this pipe. Empty if it still does. Costs one system call.
    std::optional<std::string> loss() const;

    /// Who may write lines: "everybody", "its owner and group" or "its owner alone".
    const std::string& writers() const { return m_writers; }

    /// A message that others could read the pipe until it was claimed; empty if they could not.
    const std::string& correction() const { return m_correction; }

private:
    FileDescriptor m_reader;
    HostLock m_lock;
    /// Kept open: a read of the empty pipe then returns "no data", not "end of file".
    FileDescriptor m_writer;
    std::optional<FileIdentity> m_identity;
    std::string m_writers, m_correction;
};

/// What another user could do while the pipe is missing, because `fs.protected_symlinks` or
/// `fs.protected_fifos` is switched off in the kernel. Empty if neither is switched off.
std::optional<std::string> ledPipeRisk();

///@{
/// For senders and for LedPipeClaim.

/// Throws Error: "PATH: WHAT".
[[noreturn]] void failAtLedPipe(const std::string& what);
/// Throws Error if what is at the pipe's path is not a pipe.
void expectLedPipe(const FileStatus& found);
/// Opens the pipe without waiting for its other end. Does not follow a link.
FileDescriptor tryOpenLedPipe(int flags);
/// LedPipeClaim::writers of a pipe with this mode.
std::string ledWritersOf(mode_t mode);
/// The number of a group of this machine; empty if there is no such group.
std::optional<gid_t> tryFindGroup(const std::string& name);
///@}

} // namespace board
