#include "base/File.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include "base/Error.h"

namespace board {

namespace {

template <class Call>
auto repeatInterrupted(Call call) -> decltype(call()) {
    decltype(call()) result;
    do
        result = call();
    while (result == -1 && errno == EINTR);
    return result;
}

/// Reads to the end, or only until at least `size` bytes are read if `size` is not 0.
template <class Read>
std::string readUpTo(Read read, std::size_t limit, const std::string& path, const char* what,
                     std::size_t size = 0) {
    std::string content;
    char chunk[4096];
    while (content.size() <= limit && (size == 0 || content.size() < size)) {
        const ssize_t count = read(chunk, sizeof chunk);
        if (count < 0)
            failWith(path, what, errno);
        if (count == 0)
            break;
        content.append(chunk, static_cast<std::size_t>(count));
    }
    content.resize(std::min(content.size(), limit + 1));
    return content;
}

/// The same. Throws Error for more than `limit` bytes, and if a signal interrupts the read.
std::string readWhole(int descriptor, std::size_t limit, const std::string& path,
                      std::size_t size = 0) {
    const auto readOnce = [&](void* bytes, std::size_t most) {
        return tryReadOnce(descriptor, bytes, most);
    };
    std::string content = readUpTo(readOnce, limit, path, "can't read", size);
    if (content.size() > limit)
        failTooLarge(path, limit);
    return content;
}

} // namespace

std::string reasonOf(int error) {
    return std::strerror(error);
}

void failWith(const std::string& path, const std::string& what, int error) {
    throw Error(path + ": " + what + ": " + reasonOf(error));
}

FileKind kindOf(const std::string& path) {
    std::size_t size = 0;
    return kindOf(path, size);
}

FileKind kindOf(const std::string& path, std::size_t& size) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        size = 0;
        return FileKind::MISSING;
    }
    size = static_cast<std::size_t>(status.st_size);
    return kindOf(status.st_mode);
}

FileKind kindOf(const FileDescriptor& file) {
    struct stat status {};
    return ::fstat(file.number(), &status) == 0 ? kindOf(status.st_mode) : FileKind::OTHER;
}

FileKind kindOf(mode_t mode) {
    switch (mode & S_IFMT) {
    case S_IFREG:
        return FileKind::REGULAR;
    case S_IFDIR:
        return FileKind::FOLDER;
    case S_IFIFO:
        return FileKind::PIPE;
    case S_IFCHR:
        return FileKind::CHARACTER_DEVICE;
    case S_IFBLK:
        return FileKind::BLOCK_DEVICE;
    default:
        return FileKind::OTHER;
    }
}

off_t trySize(const FileDescriptor& file) {
    return ::lseek(file.number(), 0, SEEK_END);
}

off_t trySize(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_size : -1;
}

mode_t permissionsOf(const FileDescriptor& file) {
    struct stat status {};
    return ::fstat(file.number(), &status) == 0 ? status.st_mode & 07777 : 0;
}

bool isDevice(const std::string& path) {
    struct statfs system {};
    return kindOf(path) == FileKind::BLOCK_DEVICE ||
           (::statfs(path.c_str(), &system) == 0 && system.f_type == SYSFS_MAGIC);
}

bool isOfDeviceTree(const FileDescriptor& file) {
    struct statfs system {};
    return ::fstatfs(file.number(), &system) == 0 && system.f_type == SYSFS_MAGIC;
}

FileDescriptor tryOpen(const std::string& path, int flags) {
    const auto open = [&] { return ::open(path.c_str(), flags | O_CLOEXEC); };
    return FileDescriptor((flags & O_NONBLOCK) != 0 ? repeatInterrupted(open) : open());
}

FileDescriptor openFile(const std::string& path, int flags, const char* what) {
    FileDescriptor file = tryOpen(path, flags);
    if (!file.isOpen())
        failWith(path, what, errno);
    return file;
}

void writeFile(const std::string& path, const std::string& content) {
    constexpr mode_t EVERYBODY = 0666; // minus the bits that the umask clears
    const FileDescriptor file(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, EVERYBODY));
    if (!file.isOpen() || !tryWriteAll(file, content))
        failWith(path, "can't write the file", errno);
}

FileDescriptor createUnique(const std::string& start, std::string& name, const std::string& path,
                            const char* what) {
    name = start + ".XXXXXX";
    FileDescriptor file(::mkostemp(name.data(), O_CLOEXEC));
    if (!file.isOpen())
        failWith(path, what, errno);
    return file;
}

ssize_t tryRead(const FileDescriptor& file, void* bytes, std::size_t size) {
    return repeatInterrupted([&] { return ::read(file.number(), bytes, size); });
}

ssize_t tryReadOnce(int descriptor, void* bytes, std::size_t size) {
    return ::read(descriptor, bytes, size);
}

ssize_t tryReadAt(const FileDescriptor& file, void* bytes, std::size_t size, off_t position) {
    return repeatInterrupted([&] { return ::pread(file.number(), bytes, size, position); });
}

ssize_t tryWrite(const FileDescriptor& file, const void* bytes, std::size_t size) {
    return repeatInterrupted([&] { return ::write(file.number(), bytes, size); });
}

ssize_t tryWriteAt(const FileDescriptor& file, const void* bytes, std::size_t size,
                   off_t position) {
    return repeatInterrupted([&] { return ::pwrite(file.number(), bytes, size, position); });
}

bool tryWriteAll(const FileDescriptor& file, const std::string& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t written = tryWrite(file, bytes.data() + done, bytes.size() - done);
        if (written == 0)
            errno = EIO; // a device that accepts nothing would keep this loop going forever
        if (written <= 0)
            return false;
        done += static_cast<std::size_t>(written);
    }
    return true;
}

bool trySync(const FileDescriptor& file) {
    return repeatInterrupted([&] { return ::fsync(file.number()); }) == 0;
}

bool trySetMode(const FileDescriptor& file, mode_t mode) {
    return ::fchmod(file.number(), mode) == 0;
}

bool tryRename(const std::string& from, const std::string& to) {
    return ::rename(from.c_str(), to.c_str()) == 0;
}

std::string readUpTo(const FileDescriptor& file, std::size_t limit, const std::string& path,
                     const char* what) {
    return readUpTo([&](void* bytes, std::size_t size) { return tryRead(file, bytes, size); },
                    limit, path, what);
}

void failTooLarge(const std::string& path, std::size_t limit) {
    throw Error(path + ": is larger than " + std::to_string(limit) +
                " bytes, which is the most expected");
}

std::string readFile(const std::string& path, std::size_t limit) {
    return readWhole(openFile(path, O_RDONLY).number(), limit, path);
}

std::string readFile(const std::string& path, std::size_t limit, std::size_t size) {
    return readWhole(openFile(path, O_RDONLY).number(), limit, path, size);
}

std::string readStandardInput(std::size_t limit) {
    return readWhole(STDIN_FILENO, limit, "standard input");
}

std::optional<std::string> tryReadLine(const std::string& path) {
    const FileDescriptor file = tryOpen(path, O_RDONLY | O_NONBLOCK);
    char line[4096];
    const ssize_t length = file.isOpen() ? tryRead(file, line, sizeof line) : -1;
    if (length < 0)
        return std::nullopt;
    return std::string(line, std::find(line, line + length, '\n'));
}

void expectReadable(const std::string& path) {
    if (::access(path.c_str(), R_OK) != 0)
        failWith(path, "can't open", errno);
}

void expectWritable(const std::string& path) {
    constexpr mode_t WRITE = 0222;
    constexpr char WHAT[] = "can't open for writing";
    if (::access(path.c_str(), W_OK) != 0)
        failWith(path, WHAT, errno);
    if (kindOf(path) == FileKind::FOLDER)
        failWith(path, WHAT, EISDIR);
    struct stat status {};
    // In sysfs, not even root may write to a file whose mode allows nobody to write.
    if (isDevice(path) && ::stat(path.c_str(), &status) == 0 && (status.st_mode & WRITE) == 0)
        failWith(path, WHAT, EACCES);
}

bool tryLock(const FileDescriptor& file) {
    return ::flock(file.number(), LOCK_EX | LOCK_NB) == 0;
}

bool tryMakePipe(const std::string& path, mode_t mode) {
    return ::mkfifo(path.c_str(), mode) == 0;
}

bool tryMakePipe(FileDescriptor& readEnd, FileDescriptor& writeEnd) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return false;
    readEnd = FileDescriptor(ends[0]);
    writeEnd = FileDescriptor(ends[1]);
    return true;
}

void makeFolder(const std::string& path) {
    if (::mkdir(path.c_str(), 0777) != 0)
        failWith(path, "can't make the folder", errno);
}

std::string makeUniqueFolder(const std::string& start) {
    std::string path = start + "XXXXXX";
    if (!::mkdtemp(path.data()))
        failWith(path, "can't make a temporary folder", errno);
    return path;
}

mode_t modeOfNewFile() {
    const mode_t mask = ::umask(0); // the only call that returns the mask also sets it
    ::umask(mask);
    return 0666 & ~mask;
}

std::string discard(const std::string& file) {
    return ::unlink(file.c_str()) == 0 ? "" : "; " + file + " can't be removed: " + reasonOf(errno);
}

} // namespace board
