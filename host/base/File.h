#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include <sys/types.h>

#include "base/FileDescriptor.h"

/// Functions that call the operating system to open, read, write and replace files. In host/ and
/// tools/, only this folder makes such calls. Other rooms use std::filesystem for paths and
/// folders. They open devices and pipes with these functions, and may then poll, lock or control
/// them.
///
/// A function whose name begins with `try` reports failure in its result and leaves the reason in
/// `errno`. A function that only answers a question (what kind of file, which mode) never fails:
/// its comment tells what it returns if the answer can't be found out. The others throw Error with
/// "PATH: what failed: the system's reason". A call that a signal interrupts is repeated unless the
/// function's comment says otherwise.
namespace board {

/// The system's description of an `errno` value.
std::string reasonOf(int error);

/// Throws Error: "PATH: WHAT: REASON".
[[noreturn]] void failWith(const std::string& path, const std::string& what, int error);

enum class FileKind { MISSING, REGULAR, FOLDER, PIPE, CHARACTER_DEVICE, BLOCK_DEVICE, OTHER };

/// Follows symbolic links. Returns MISSING, with the reason in `errno`, if the path can't be
/// examined for any reason.
FileKind kindOf(const std::string& path);
/// The same. Also stores the size that the file system states, or 0 if the file can't be examined.
FileKind kindOf(const std::string& path, std::size_t& size);
/// OTHER if the open file can't be examined; the reason is then in `errno`.
FileKind kindOf(const FileDescriptor& file);
/// The kind that the `st_mode` of a stat call contains.
FileKind kindOf(mode_t mode);

/// The permission bits; 0 if the open file can't be examined.
mode_t permissionsOf(const FileDescriptor& file);

/// The size of a file or a block device, found by seeking to its end; -1 on failure.
off_t trySize(const FileDescriptor& file);
/// The size that the file system states, without opening the file; -1 on failure.
off_t trySize(const std::string& path);

/// True for block devices and for files of the kernel's sysfs, such as an EEPROM. A sysfs file
/// looks like an ordinary file, but a new file can't take its place. False if the file can't be
/// examined.
bool isDevice(const std::string& path);
bool isOfDeviceTree(const FileDescriptor& file);

/// Opens an existing file with O_CLOEXEC added to `flags`. Without O_NONBLOCK an open may wait, for
/// example for the other end of a pipe; a signal that the program handles then interrupts it.
FileDescriptor tryOpen(const std::string& path, int flags);
FileDescriptor openFile(const std::string& path, int flags, const char* what = "can't open");
/// Creates a file, or truncates the one that exists, and writes `content`. Not atomic: to replace a
/// file that others read, use FileReplacement.
void writeFile(const std::string& path, const std::string& content);
/// Creates a new file with a unique name that begins with `start`, and stores that name in `name`.
/// An Error names `path` and contains `what`.
FileDescriptor createUnique(const std::string& start, std::string& name, const std::string& path,
                            const char* what);

/// One read of at most `size` bytes. Returns 0 at the end and -1 on failure.
ssize_t tryRead(const FileDescriptor& file, void* bytes, std::size_t size);
/// The same, but a signal that the program handles interrupts it (EINTR). Also reads descriptors
/// that the caller does not own.
ssize_t tryReadOnce(int descriptor, void* bytes, std::size_t size);
/// Like tryRead, at a position in the file.
ssize_t tryReadAt(const FileDescriptor& file, void* bytes, std::size_t size, off_t position);
/// One write, which may be short. Returns -1 on failure.
ssize_t tryWrite(const FileDescriptor& file, const void* bytes, std::size_t size);
/// The same at a position in the file. Fails with ESPIPE on files without positions.
ssize_t tryWriteAt(const FileDescriptor& file, const void* bytes, std::size_t size, off_t position);
/// Writes all bytes, in as many calls as necessary.
bool tryWriteAll(const FileDescriptor& file, const std::string& bytes);
bool trySync(const FileDescriptor& file);
bool trySetMode(const FileDescriptor& file, mode_t mode);
/// Replaces `to` if it exists.
bool tryRename(const std::string& from, const std::string& to);

/// Reads to the end, but at most `limit` + 1 bytes: a longer result means that the file exceeds
/// the limit.
std::string readUpTo(const FileDescriptor& file, std::size_t limit, const std::string& path,
                     const char* what = "can't read");

/// Throws Error, saying that the file is larger than `limit` bytes.
[[noreturn]] void failTooLarge(const std::string& path, std::size_t limit);

/// The content of a file of at most `limit` bytes. Throws Error if the file is larger or can't be
/// read. A signal that the program handles interrupts the read, because the file may be a pipe that
/// nobody writes to.
std::string readFile(const std::string& path, std::size_t limit);

/// The same for a file whose stated size is `size`: stops once at least that many bytes are read,
/// without another read to find the end. Reads to the end if `size` is 0, because files of the
/// kernel may state 0 and hold more.
std::string readFile(const std::string& path, std::size_t limit, std::size_t size);

/// The same for standard input.
std::string readStandardInput(std::size_t limit);

/// The first line of a small file, without its newline; nullopt if the file can't be read.
std::optional<std::string> tryReadLine(const std::string& path);

/// Throws Error with the system's reason if the file can't be opened for reading.
void expectReadable(const std::string& path);
/// Throws Error with the system's reason if the file can't be opened for writing. Only checks its
/// permissions and its kind; does not open it.
void expectWritable(const std::string& path);

/// Locks the open file exclusively, without waiting. `errno` is EWOULDBLOCK if another descriptor
/// holds the lock. To wait for the lock, see FileLock.h.
bool tryLock(const FileDescriptor& file);

/// Creates a named pipe with the bits of `mode` that the umask does not clear. `errno` is EEXIST if
/// the path exists already.
bool tryMakePipe(const std::string& path, mode_t mode);

/// Creates a pipe without a name. Both ends are non-blocking.
bool tryMakePipe(FileDescriptor& readEnd, FileDescriptor& writeEnd);

void makeFolder(const std::string& path);
/// Creates a folder with a unique name that begins with `start`, for this user only. Returns its
/// path.
std::string makeUniqueFolder(const std::string& start);

/// The mode that the umask grants a new file. Changes the umask for a moment, so no other thread
/// may create a file meanwhile.
mode_t modeOfNewFile();

/// Removes an incomplete file. Does not throw, because the caller is already reporting another
/// failure. Returns the text that the caller must append to its message: empty, or why the file
/// could not be removed.
std::string discard(const std::string& file);

} // namespace board
