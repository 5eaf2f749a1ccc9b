#include "base/FileReplacement.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/EndingSignals.h"
#include "base/Error.h"
#include "base/File.h"
#include "base/Text.h"

namespace fs = std::filesystem;

namespace board {

namespace {

/// In a sticky folder to which everybody may write, accepts only links and files that belong to
/// this user or to the folder's owner. The kernel protects a shell's output in the same way if
/// fs.protected_symlinks and fs.protected_regular are on.
void expectTrusted(const std::string& path, const std::string& entry) {
    const std::optional<FileStatus> found = tryExamine(entry), folder = tryExamine(folderOf(entry));
    if (!found || !folder)
        failWith(path, "can't follow the path", errno);
    constexpr mode_t OPEN_TO_ALL = S_ISVTX | S_IWOTH;
    if ((folder->mode & OPEN_TO_ALL) == OPEN_TO_ALL && found->owner != ::geteuid() &&
        found->owner != folder->owner)
        throw Error(path + ": leads to a " + (S_ISLNK(found->mode) ? "symbolic link" : "file") +
                    " of user " + std::to_string(found->owner) +
                    " in a folder to which everybody may write (expected a file of this user)");
}

/// The file that a path leads to through symbolic links, even if that file does not exist yet.
std::string behindLinks(const std::string& path) {
    std::error_code error;
    fs::path target = fs::absolute(path, error);
    for (int links = 0; !error && fs::is_symlink(fs::symlink_status(target, error)); ++links) {
        if (links == 40)
            failWith(path, "can't follow the path", ELOOP);
        expectTrusted(path, target.string());
        target = target.parent_path() / fs::read_symlink(target, error);
    }
    if (error && error != std::errc::no_such_file_or_directory)
        failWith(path, "can't follow the path", error.value());
    return target.string();
}

bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

void expectReplaceable(const std::string& path, mode_t mode) {
    const FileKind kind = kindOf(mode);
    if (kind != FileKind::REGULAR && kind != FileKind::BLOCK_DEVICE &&
        kind != FileKind::CHARACTER_DEVICE)
        throw Error(path + ": can't be replaced (expected a file or a device)");
}

} // namespace

FileReplacement::FileReplacement(const std::string& path, Manner manner, const LockWait& wait)
    : m_path(path) {
    for (LockWaiter waiter(path, wait);;) {
        m_target = behindLinks(path);
        struct stat named {};
        if (::stat(m_target.c_str(), &named) != 0) {
            if (errno != ENOENT)
                failWith(path, "can't examine the file", errno);
            return;
        }
        expectTrusted(path, m_target);
        expectReplaceable(path, named.st_mode);
        // If the file is replaced, nothing is written through this descriptor. The file is still
        // opened for writing: a writable folder does not imply permission to replace the file.
        m_lock = tryOpen(m_target, O_WRONLY | O_NONBLOCK | O_NOCTTY);
        if (!m_lock.isOpen())
            failWith(path, "can't open for writing", errno);
        if (manner != Manner::UNREAD || kindOf(m_lock) != FileKind::REGULAR)
            waiter.lock(m_lock, LockKind::EXCLUSIVE);
        struct stat locked {};
        if (::fstat(m_lock.number(), &locked) != 0)
            failWith(path, "can't examine the file", errno);
        expectReplaceable(path, locked.st_mode);
        m_inPlace = manner == Manner::IN_PLACE || kindOf(locked.st_mode) != FileKind::REGULAR ||
                    isOfDeviceTree(m_lock);
        // Meanwhile, the previous holder of the lock may have replaced the file or changed the
        // link.
        const bool isThere = ::stat(path.c_str(), &named) == 0;
        if (!isThere && errno != ENOENT)
            failWith(path, "can't examine the file", errno);
        if (!isThere || !isSameFile(locked, named)) {
            m_lock.close();
            if (isEndAsked()) // others may replace the file again and again
                failWith(path, "can't lock", EINTR);
            continue;
        }
        if (!m_inPlace && locked.st_nlink > 1)
            throw Error(path + ": has " + std::to_string(locked.st_nlink) +
                        " names (hard links), and the others would keep the old content (expected "
                        "a file with one name, such as a copy)");
        return;
    }
}

FileAccess FileReplacement::access() const {
    const std::optional<FileAccess> access = tryAccessOf(m_lock);
    if (!access)
        failWith(m_path, "can't examine the file", errno);
    return *access;
}

std::string FileReplacement::content(std::size_t limit) const {
    if (!m_lock.isOpen()) // the file may exist by now, but is not locked
        failWith(m_path, "can't open", ENOENT);
    const FileDescriptor file = tryOpen(m_target, O_RDONLY | O_NONBLOCK);
    if (!file.isOpen())
        failWith(m_path, "can't open", errno);
    if (const FileKind kind = kindOf(file); kind == FileKind::PIPE || kind == FileKind::FOLDER)
        throw Error(m_path + ": has become something else (expected a file or a device)");
    std::string bytes = readUpTo(file, limit, m_path);
    if (bytes.size() > limit && !m_inPlace)
        failTooLarge(m_path, limit);
    bytes.resize(std::min(bytes.size(), limit));
    return bytes;
}

void FileReplacement::commit(const std::string& bytes, std::optional<mode_t> newMode) {
    if (m_inPlace) {
        writeInPlace(bytes);
        return;
    }
    NewFile file{m_path, m_target, m_target, {}};
    if (exists())
        file.access = access();
    else if (newMode)
        file.access = FileAccess{::geteuid(), ::getegid(), *newMode};
    putNewFile(file, bytes);
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
    // A later read must come from the device, not from the page cache. Some devices can't be
    // synced.
    if (!trySync(m_lock) && errno != EINVAL)
        failWith(m_path, "can't sync", errno);
    static_cast<void>(::posix_fadvise(m_lock.number(), 0, 0, POSIX_FADV_DONTNEED));
}

LineFile::LineFile(const std::string& path)
    : m_path(path),
      m_file(::open(path.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666)) {
    if (!m_file.isOpen())
        failWith(path, "can't open", errno);
    if (kindOf(m_file) == FileKind::PIPE)
        throw Error(path + ": is a pipe (expected a file for the record)");
}

void LineFile::append(const std::string& line) const {
    const off_t size = trySize(m_file); // -1 for a terminal
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
    std::string window = "\n"; // what may be the start of the line, then the next bytes
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

void replaceFile(const std::string& path, const std::string& bytes, std::optional<mode_t> newMode) {
    FileReplacement(path, FileReplacement::Manner::UNREAD).commit(bytes, newMode);
}

} // namespace board
