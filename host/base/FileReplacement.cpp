#include "base/FileReplacement.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/Error.h"
#include "base/File.h"

namespace fs = std::filesystem;

namespace board {

namespace {

/// The file that a path leads to through symbolic links, even if that file does not exist yet.
std::string behindLinks(const std::string& path) {
    std::error_code error;
    fs::path target = fs::absolute(path, error);
    for (int links = 0; !error && fs::is_symlink(fs::symlink_status(target, error)); ++links) {
        if (links == 40)
            failWith(path, "can't follow the path", ELOOP);
        target = target.parent_path() / fs::read_symlink(target, error);
    }
    if (error && error != std::errc::no_such_file_or_directory)
        failWith(path, "can't follow the path", error.value());
    return target.string();
}

bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool isAt(const std::string& path, const struct stat& status) {
    struct stat named {};
    return ::lstat(path.c_str(), &named) == 0 && isSameFile(named, status);
}

/// Removes a file that a killed program has left, or waits until its program is done with it.
/// Returns whether it is gone. A file that this program would not have made stays.
bool tryClear(const std::string& name) {
    const FileDescriptor file = tryOpen(name, O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
    struct stat found {};
    if (!file.isOpen())
        return errno == ENOENT;
    if (::fstat(file.number(), &found) != 0 || kindOf(found.st_mode) != FileKind::REGULAR ||
        found.st_uid != ::geteuid() || found.st_nlink > 1 || !tryLockWaiting(file))
        return false;
    return !isAt(name, found) || ::unlink(name.c_str()) == 0;
}

/// Creates a file beside `target` and locks it; stores its name in `name`. The name is always the
/// same, so that the next program finds what a killed one has left. If it can't be used, the name
/// is a unique one.
FileDescriptor createBeside(const std::string& target, std::string& name, const std::string& path) {
    const fs::path whole = target;
    name = (whole.parent_path() / ("." + whole.filename().string() + ".new-content")).string();
    do {
        FileDescriptor file(
            ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
        const int error = errno;
        struct stat made {};
        if (!file.isOpen() && error != EEXIST)
            failWith(path, "can't create a new file in its folder", error);
        // Another program may have found the file before it was locked, and have removed it.
        if (file.isOpen() && (tryLock(file) || errno != EWOULDBLOCK) &&
            (::fstat(file.number(), &made) != 0 || isAt(name, made)))
            return file;
    } while (tryClear(name));
    return createUnique(target, name, path, "can't create a new file in its folder");
}

/// A new file in the folder of the target; removed again unless it was renamed into place or
/// discarded.
class Beside {
public:
    Beside(const std::string& path, const std::string& target)
        : m_path(path), m_file(createBeside(target, m_name, path)) {}
    ~Beside() {
        if (!m_isGone)
            static_cast<void>(board::discard(m_name)); // the failure is already being reported
    }
    Beside(const Beside&) = delete;
    Beside& operator=(const Beside&) = delete;

    void write(const std::string& bytes) const {
        if (!tryWriteAll(m_file, bytes))
            failWith(m_path, "can't write the new content", errno);
    }

    /// Throws Error if the file holds anything else.
    void expect(const std::string& bytes) const {
        if (::lseek(m_file.number(), 0, SEEK_SET) != 0)
            failWith(m_path, "can't read the new content back", errno);
        if (readUpTo(m_file, bytes.size(), m_path, "can't read the new content back") != bytes)
            throw Error(m_path + ": the new file does not hold what was written to it");
    }

    void giveTo(uid_t owner, gid_t group, mode_t mode) const {
        struct stat made {};
        // A service may not be allowed to change owners at all, even to what they are.
        const bool isTheirs =
            ::fstat(m_file.number(), &made) == 0 && made.st_uid == owner && made.st_gid == group;
        if (!isTheirs && ::fchown(m_file.number(), owner, group) != 0)
            failWith(m_path, "can't give the new file to the owner of the old one", errno);
        setMode(mode);
    }

    void setMode(mode_t mode) const {
        if (!trySetMode(m_file, mode))
            failWith(m_path, "can't set the new file's mode", errno);
    }

    void takePlaceOf(const std::string& target) {
        if (!trySync(m_file))
            failWith(m_path, "can't sync the new content", errno);
        // Opened before the target changes: after that nothing should fail.
        const FileDescriptor folder =
            tryOpen(fs::path(target).parent_path().string(), O_RDONLY | O_DIRECTORY);
        if (!folder.isOpen())
            failWith(m_path, "can't open its folder", errno);
        if (!tryRename(m_name, target))
            failWith(m_path, "can't rename the new file into place", errno);
        m_isGone = true;
        if (!trySync(folder))
            failWith(m_path, "was replaced, but its folder can't be synced", errno);
    }

    /// What a failure's message must add.
    std::string discard() { return std::exchange(m_isGone, true) ? "" : board::discard(m_name); }

private:
    const std::string m_path;
    std::string m_name;
    const FileDescriptor m_file;
    bool m_isGone = false; ///< renamed, or removed
};

} // namespace

FileReplacement::FileReplacement(const std::string& path, Manner manner,
                                 const std::function<void()>& onWait)
    : m_path(path) {
    for (bool isWaiting = false;;) {
        m_target = behindLinks(path);
        struct stat named {};
        if (::stat(m_target.c_str(), &named) != 0) {
            if (errno != ENOENT)
                failWith(path, "can't examine the file", errno);
            return;
        }
        const FileKind kind = kindOf(named.st_mode);
        const bool isDevice = kind == FileKind::BLOCK_DEVICE || kind == FileKind::CHARACTER_DEVICE;
        if (kind != FileKind::REGULAR && !isDevice)
            throw Error(path + ": can't be replaced (expected a file or a device)");
        // The new content of a file never goes through this descriptor. It is still opened for
        // writing: a writable folder does not imply permission to replace the file.
        m_lock = tryOpen(m_target, O_WRONLY | O_NONBLOCK | O_NOCTTY);
        if (!m_lock.isOpen())
            failWith(path, "can't open for writing", errno);
        m_inPlace = manner == Manner::IN_PLACE || isDevice || isOfDeviceTree(m_lock);
        struct stat locked {};
        bool isLocked = tryLock(m_lock);
        if (!isLocked && errno == EWOULDBLOCK) {
            if (!std::exchange(isWaiting, true))
                onWait();
            isLocked = tryLockWaiting(m_lock); // a signal may end the wait
        }
        if (!isLocked)
            failWith(path, "can't lock", errno);
        if (::fstat(m_lock.number(), &locked) != 0)
            failWith(path, "can't examine the file", errno);
        // Meanwhile, the previous holder of the lock may have replaced the file or changed the
        // link.
        if (::stat(path.c_str(), &named) == 0 && isSameFile(locked, named))
            return;
        m_lock.close();
    }
}

std::string FileReplacement::content(std::size_t limit) const {
    if (!m_lock.isOpen()) // the file may exist by now, but is not locked
        failWith(m_path, "can't open", ENOENT);
    const FileDescriptor file = tryOpen(m_target, O_RDONLY | O_NONBLOCK);
    if (!file.isOpen())
        failWith(m_path, "can't open", errno);
    std::string bytes = readUpTo(file, limit, m_path);
    if (bytes.size() > limit && !m_inPlace)
        failTooLarge(m_path, limit);
    bytes.resize(std::min(bytes.size(), limit));
    return bytes;
}

void FileReplacement::commit(const std::string& bytes) {
    if (m_inPlace)
        writeInPlace(bytes);
    else
        rewriteBeside(bytes);
}

void FileReplacement::rewriteBeside(const std::string& bytes) const {
    Beside beside(m_path, m_target);
    try {
        beside.write(bytes);
        beside.expect(bytes);
        if (!m_lock.isOpen()) {
            beside.setMode(modeOfNewFile());
        } else {
            struct stat old {};
            if (::fstat(m_lock.number(), &old) != 0)
                failWith(m_path, "can't examine the file", errno);
            beside.giveTo(old.st_uid, old.st_gid, old.st_mode & 07777);
        }
        beside.takePlaceOf(m_target);
    } catch (const Error& error) {
        throw Error(error.what() + beside.discard());
    }
}

void FileReplacement::writeInPlace(const std::string& bytes) const {
    ssize_t written = tryWriteAt(m_lock, bytes.data(), bytes.size(), 0);
    if (written < 0 && errno == ESPIPE) // a device without positions is always at its start
        written = tryWrite(m_lock, bytes.data(), bytes.size());
    if (written < 0)
        failWith(m_path, "can't write", errno);
    if (static_cast<std::size_t>(written) != bytes.size())
        throw Error(m_path + ": accepted only " + std::to_string(written) + " of " +
                    std::to_string(bytes.size()) + " bytes");
    // A later read must come from the device, not from memory. Some devices have nothing to sync.
    if (!trySync(m_lock) && errno != EINVAL)
        failWith(m_path, "can't sync", errno);
    static_cast<void>(::posix_fadvise(m_lock.number(), 0, 0, POSIX_FADV_DONTNEED));
}

LineFile::LineFile(const std::string& path)
    : m_path(path), m_file(::open(path.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, 0666)) {
    if (!m_file.isOpen())
        failWith(path, "can't open", errno);
}

void LineFile::append(const std::string& line) const {
    const off_t size = trySize(m_file); // -1 for a pipe or a terminal
    char last = '\n';
    if (size > 0 && tryReadAt(m_file, &last, 1, size - 1) != 1)
        failWith(m_path, "can't read the last line", errno);
    const std::string bytes = (last == '\n' ? "" : "\n") + line + "\n";
    const ssize_t written = tryWrite(m_file, bytes.data(), bytes.size());
    if (written < 0)
        failWith(m_path, "can't append", errno);
    if (static_cast<std::size_t>(written) != bytes.size())
        throw Error(m_path + ": accepted only " + std::to_string(written) + " of " +
                    std::to_string(bytes.size()) + " bytes");
    if (!trySync(m_file) && errno != EINVAL)
        failWith(m_path, "can't sync", errno);
}

bool LineFile::holds(const std::string& line) const {
    const std::string wanted = "\n" + line + "\n";
    std::string window = "\n"; // what may be the start of the line, then what follows
    std::vector<char> bytes(std::size_t{64} * 1024);
    off_t position = 0;
    if (kindOf(m_file) != FileKind::REGULAR) // a device may have no end
        return false;
    while (window.find(wanted) == std::string::npos) {
        window.erase(0, window.size() - std::min(window.size(), wanted.size()));
        const ssize_t size = tryReadAt(m_file, bytes.data(), bytes.size(), position);
        if (size < 0)
            failWith(m_path, "can't read", errno);
        if (size == 0)
            return false;
        window.append(bytes.data(), static_cast<std::size_t>(size));
        position += size;
    }
    return true;
}

void replaceFile(const std::string& path, const std::string& bytes) {
    FileReplacement(path).commit(bytes);
}

} // namespace board
