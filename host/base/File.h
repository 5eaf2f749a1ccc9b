#pragma once

#include <cstddef>
#include <string>

#include <sys/types.h>

#include "base/FileDescriptor.h"

/// Calls of the operating system for files. Nothing else in the host or its programs makes them.
///
/// Functions whose names begin with `try` report failure in their result and leave the reason in
/// `errno`; all others throw Error with "PATH: what failed: the system's reason". A call that a
/// signal interrupts is repeated unless a function says otherwise.
namespace board {

/// The system's words for an `errno` value.
std::string reasonOf(int error);

/// Throws Error: "PATH: WHAT: REASON".
[[noreturn]] void failWith(const std::string& path, const std::string& what, int error);

enum class FileKind { MISSING, REGULAR, FOLDER, PIPE, CHARACTER_DEVICE, BLOCK_DEVICE, OTHER };

/// Follows symbolic links. A path that can't be looked at for any reason is MISSING, and `errno`
/// says why.
FileKind kindOf(const std::string& path);
/// OTHER, with the reason in `errno`, if the open file can't be looked at.
FileKind kindOf(const FileDescriptor& file);

/// True for block devices and for files of the kernel's device tree (sysfs), such as an EEPROM.
/// Those look like ordinary files, but a new file can't take their place.
bool isDevice(const std::string& path);
bool isOfDeviceTree(const FileDescriptor& file);

/// Opens with O_CLOEXEC added to `flags`. An open that waits, as for a pipe's other end, is
/// interrupted by a signal that the program handles; with O_NONBLOCK none waits.
FileDescriptor tryOpen(const std::string& path, int flags);
FileDescriptor openFile(const std::string& path, int flags, const char* what = "can't open");
/// Creates a file that did not exist, with a unique name that begins with `start`; stores the name
/// in `name`.
FileDescriptor createUnique(const std::string& start, std::string& name, const std::string& path,
                            const char* what);

/// One read of at most `size` bytes. Returns 0 at the end and -1 on failure.
ssize_t tryRead(const FileDescriptor& file, void* bytes, std::size_t size);
/// One write, which may be short. Returns -1 on failure.
ssize_t tryWrite(const FileDescriptor& file, const void* bytes, std::size_t size);
/// The same at a position in the file, which must have positions (else ESPIPE).
ssize_t tryWriteAt(const FileDescriptor& file, const void* bytes, std::size_t size, off_t position);
/// Writes everything, in as many calls as that takes.
bool tryWriteAll(const FileDescriptor& file, const std::string& bytes);
bool trySync(const FileDescriptor& file);

/// Reads to the end, or until more than `limit` bytes have come; the result then has `limit` + 1
/// bytes.
std::string readUpTo(const FileDescriptor& file, std::size_t limit, const std::string& path,
                     const char* what = "can't read");

/// Throws Error: the file is larger than `limit` bytes.
[[noreturn]] void failTooLarge(const std::string& path, std::size_t limit);

/// The content of a file of at most `limit` bytes. Throws Error if it can't be read or is larger,
/// or if a signal that the program handles interrupts the wait for it.
std::string readFile(const std::string& path, std::size_t limit);

/// Throws Error with the system's reason if the file can't be opened for reading.
void expectReadable(const std::string& path);

/// Locks the whole open file for this descriptor, without waiting. False if another descriptor
/// holds it
/// (`errno` is EWOULDBLOCK) or the lock can't be had.
bool tryLock(const FileDescriptor& file);
/// The same, but waits. A signal that the program handles interrupts the wait: false, `errno` is
/// EINTR.
bool tryLockWaiting(const FileDescriptor& file);

/// Makes a named pipe with exactly `mode`, whatever the umask is. False if that fails; `errno` is
/// EEXIST if the path exists already.
bool tryMakePipe(const std::string& path, mode_t mode);

/// The mode that the umask leaves a new file.
mode_t modeOfNewFile();

/// Removes a file that is not complete. Returns what the message of the failure must add: nothing,
/// or that the file could not be removed.
std::string discard(const std::string& file);

} // namespace board
