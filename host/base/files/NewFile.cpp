#include "base/files/NewFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/Error.h"
#include "base/File.h"
#include "base/Text.h"
#include "base/files/FileLock.h"

namespace fs = std::filesystem;

namespace board {

namespace {

constexpr std::size_t UNIQUE_LETTERS = 6;

std::string temporaryNameFor(const NewFile& file) {
    return folderOf(file.beside) + "." + fileNameOf(file.beside) + ".new-content";
}

bool isAt(const std::string& path, const struct stat& status) {
    struct stat named {};
    return ::lstat(path.c_str(), &named) == 0 && named.st_dev == status.st_dev &&
           named.st_ino == status.st_ino;
}

enum class IfLocked { WAIT, LEAVE };

/// Removes a file that a killed program has left. Returns whether the file is gone. Keeps a file
/// that this program would not have made.
bool tryClear(const std::string& name, const NewFile& wanted, IfLocked ifLocked) {
    const FileDescriptor file = tryOpen(name, O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
    struct stat found {};
    if (!file.isOpen())
        return errno == ENOENT;
    if (::fstat(file.number(), &found) != 0 || kindOf(found.st_mode) != FileKind::REGULAR ||
        found.st_nlink > 1)
        return false;
    const bool isOurs =
        found.st_uid == ::geteuid() || (wanted.access && found.st_uid == wanted.access->owner);
    if (!isOurs)
        return false;
    try {
        LockWait wait;
        // Another user may hold the lock on his file forever, so this does not wait for it.
        if (ifLocked == IfLocked::LEAVE || found.st_uid != ::geteuid())
            wait.most = std::chrono::milliseconds(0);
        LockWaiter(name, wait).lock(file, LockKind::EXCLUSIVE);
    } catch (const Error&) {
        return false;
    }
    return !isAt(name, found) || ::unlink(name.c_str()) == 0;
}

/// Removes what killed programs have left under unique names.
void clearUnique(const NewFile& wanted) {
    const std::string start = fileNameOf(temporaryNameFor(wanted)) + ".";
    const auto isUnique = [&](const std::string& name) {
        return name.size() == start.size() + UNIQUE_LETTERS && name.rfind(start, 0) == 0 &&
               std::all_of(name.end() - UNIQUE_LETTERS, name.end(), [](char c) {
                   return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') ||
                          (c >= 'a' && c <= 'z');
               });
    };
    std::error_code error; // if the folder can't be listed, the files stay for now
    for (fs::directory_iterator each(folderOf(wanted.beside), error);
         !error && each != fs::directory_iterator(); each.increment(error))
        if (isUnique(each->path().filename().string()))
            static_cast<void>(tryClear(each->path().string(), wanted, IfLocked::LEAVE));
}

/// Creates the temporary file and locks it; stores its name in `name`. The name is always the same,
/// so that the next program finds what a killed one has left. If that name can't be used, the file
/// gets a unique name.
FileDescriptor create(const NewFile& wanted, std::string& name) {
    constexpr char WHAT[] = "can't create a new file in its folder";
    clearUnique(wanted);
    const std::string usual = temporaryNameFor(wanted);
    name = usual;
    do {
        FileDescriptor file(
            ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
        const int error = errno;
        struct stat made {};
        if (!file.isOpen() && error != EEXIST)
            failWith(wanted.path, WHAT, error);
        // Before the file is locked here, another program may find and remove it.
        if (file.isOpen() && (tryLock(file) || errno != EWOULDBLOCK) &&
            (::fstat(file.number(), &made) != 0 || isAt(name, made)))
            return file;
    } while (tryClear(usual, wanted, IfLocked::WAIT));
    for (;;) {
        FileDescriptor file = createUnique(usual, name, wanted.path, WHAT);
        struct stat made {};
        if ((tryLock(file) || errno != EWOULDBLOCK) &&
            (::fstat(file.number(), &made) != 0 || isAt(name, made)))
            return file;
    }
}

/// The temporary file. The destructor removes it unless it was renamed or discarded.
class Temporary {
public:
    explicit Temporary(const NewFile& wanted) : m_wanted(wanted), m_file(create(wanted, m_name)) {}
    ~Temporary() {
        if (!m_isGone)
            static_cast<void>(board::discard(m_name)); // the failure is already being reported
    }
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;

    void write(const std::string& bytes) const {
        constexpr char READ_BACK[] = "can't read the new content back";
        if (!tryWriteAll(m_file, bytes))
            failWith(m_wanted.path, "can't write the new content", errno);
        if (::lseek(m_file.number(), 0, SEEK_SET) != 0)
            failWith(m_wanted.path, READ_BACK, errno);
        if (readUpTo(m_file, bytes.size(), m_wanted.path, READ_BACK) != bytes)
            throw Error(m_wanted.path + ": the new file does not hold what was written to it");
    }

    void giveAccess() const {
        mode_t mode = m_wanted.access ? m_wanted.access->mode : modeOfNewFile();
        if (m_wanted.access && m_wanted.isCopy)
            mode = giveAsFarAsPossible(*m_wanted.access);
        else if (m_wanted.access && !tryGive(*m_wanted.access))
            failWith(m_wanted.path, "can't give the new file to the owner of the old one", errno);
        if (!trySetMode(m_file, mode))
            failWith(m_wanted.path, "can't set the new file's mode", errno);
    }

    void rename() {
        const std::string& path = m_wanted.path;
        if (!trySync(m_file))
            failWith(path, "can't sync the new content", errno);
        // Opened before the rename: after the rename, nothing should fail.
        const FileDescriptor folder = tryOpen(folderOf(m_wanted.target), O_RDONLY | O_DIRECTORY);
        if (!folder.isOpen())
            failWith(path, "can't open its folder", errno);
        if (!tryRename(m_name, m_wanted.target))
            failWith(path, "can't rename the new file into place", errno);
        m_isGone = true;
        if (!trySync(folder))
            failWith(path,
                     m_wanted.isCopy ? "its folder can't be synced"
                                     : "was replaced, but its folder can't be synced",
                     errno);
    }

    /// Removes the file unless it was renamed. Returns the text that a failure's message must
    /// append.
    std::string discard() { return std::exchange(m_isGone, true) ? "" : board::discard(m_name); }

private:
    bool tryGive(const FileAccess& access) const {
        const std::optional<FileAccess> made = tryAccessOf(m_file);
        // A service may be forbidden to call fchown at all, even with the present owner and group.
        return (made && made->owner == access.owner && made->group == access.group) ||
               ::fchown(m_file.number(), access.owner, access.group) == 0;
    }

    /// Sets the owner and group, or only the group, if the system permits. Returns the mode to set
    /// next: with it, only the file's owner may have rights that `access` does not give.
    mode_t giveAsFarAsPossible(const FileAccess& access) const {
        constexpr mode_t DATA = 0666, OTHERS = 0006;
        const mode_t mode = access.mode & DATA;
        constexpr auto SAME_OWNER = static_cast<uid_t>(-1);
        if (tryGive(access) || ::fchown(m_file.number(), SAME_OWNER, access.group) == 0)
            return mode;
        // The new file's group may have members that the original's group lacks, so it gets only
        // the rights that the original gives to all other users.
        return (mode & 0606U) | (mode & OTHERS) << 3U;
    }

    const NewFile& m_wanted;
    std::string m_name;
    const FileDescriptor m_file;
    bool m_isGone = false; ///< renamed, or removed
};

} // namespace

std::optional<FileAccess> tryAccessOf(const FileDescriptor& file) {
    struct stat status {};
    if (::fstat(file.number(), &status) != 0)
        return std::nullopt;
    return FileAccess{status.st_uid, status.st_gid, status.st_mode & 07777};
}

void putNewFile(const NewFile& file, const std::string& bytes) {
    Temporary temporary(file);
    try {
        temporary.write(bytes);
        temporary.giveAccess();
        temporary.rename();
    } catch (const Error& error) {
        throw Error(error.what() + temporary.discard());
    }
}

} // namespace board
