#include "FileReplacement.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include "Error.h"

namespace fs = std::filesystem;

namespace board {

namespace {

[[noreturn]] void fail(const std::string& path, const char* what, int error) {
    throw Error(path + ": " + what + ": " + std::strerror(error));
}

template <class Call>
auto retried(Call call) -> decltype(call()) {
    decltype(call()) result;
    do
        result = call();
    while (result == -1 && errno == EINTR);
    return result;
}

/// A descriptor that is closed with this object.
class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor() {
        if (m_number >= 0)
            ::close(m_number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return m_number; }

private:
    const int m_number;
};

/// The file that a path leads to through symbolic links, also where that does not exist yet.
std::string behindLinks(const std::string& path) {
    std::error_code error;
    fs::path target = fs::absolute(path, error);
    for (int links = 0; !error && fs::is_symlink(fs::symlink_status(target, error)); ++links) {
        if (links == 40)
            fail(path, "can't follow the path", ELOOP);
        target = target.parent_path() / fs::read_symlink(target, error);
    }
    if (error && error != std::errc::no_such_file_or_directory)
        fail(path, "can't follow the path", error.value());
    return target.string();
}

bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Files of the device tree look like ordinary ones, but a new file can't take their place.
bool isOfDeviceTree(int descriptor) {
    struct statfs system {};
    return ::fstatfs(descriptor, &system) == 0 && system.f_type == SYSFS_MAGIC;
}

/// What a new file's mode would be; the call that tells changes it too, so it is put back.
mode_t modeOfNewFile() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

/// A new file beside the target; removed again unless it was renamed into place or discarded.
class Beside {
public:
    Beside(const std::string& path, const std::string& target)
        : m_path(path), m_name(target + ".XXXXXX"), m_file(::mkostemp(m_name.data(), O_CLOEXEC)) {
        if (m_file.get() < 0)
            fail(m_path, "can't make a new file beside it", errno);
    }
    ~Beside() {
        if (!m_isGone)
            ::unlink(m_name.c_str());
    }
    Beside(const Beside&) = delete;
    Beside& operator=(const Beside&) = delete;

    void write(const std::string& bytes) const {
        for (std::size_t done = 0; done < bytes.size();) {
            const ssize_t written =
                retried([&] { return ::write(m_file.get(), bytes.data() + done, bytes.size() - done); });
            if (written < 0)
                fail(m_path, "can't write the new content", errno);
            done += static_cast<std::size_t>(written);
        }
    }

    /// Throws where the file holds anything else.
    void expect(const std::string& bytes) const {
        std::string found(bytes.size(), '\0');
        for (std::size_t done = 0; done < found.size();) {
            const ssize_t got = retried([&] {
                return ::pread(m_file.get(), found.data() + done, found.size() - done,
                               static_cast<off_t>(done));
            });
            if (got < 0)
                fail(m_path, "can't read the new content back", errno);
            if (got == 0)
                break;
            done += static_cast<std::size_t>(got);
        }
        if (found != bytes)
            throw Error(m_path + ": the new file holds something else than what was written");
    }

    void giveTo(uid_t owner, gid_t group, mode_t mode) const {
        if (::fchown(m_file.get(), owner, group) != 0)
            fail(m_path, "can't give the new file to the owner of the old one", errno);
        setMode(mode);
    }

    void setMode(mode_t mode) const {
        if (::fchmod(m_file.get(), mode) != 0)
            fail(m_path, "can't set the new file's mode", errno);
    }

    void takePlaceOf(const std::string& target) {
        if (retried([&] { return ::fsync(m_file.get()); }) != 0)
            fail(m_path, "can't sync the new content", errno);
        // Opened before the target changes: after that nothing should fail.
        const Descriptor folder(
            ::open(fs::path(target).parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (folder.get() < 0)
            fail(m_path, "can't open its folder", errno);
        if (::rename(m_name.c_str(), target.c_str()) != 0)
            fail(m_path, "can't rename the new file into place", errno);
        m_isGone = true;
        if (retried([&] { return ::fsync(folder.get()); }) != 0)
            fail(m_path, "was replaced, but its folder can't be synced", errno);
    }

    /// What the message of a failure shall add.
    std::string discard() { return std::exchange(m_isGone, true) ? "" : board::discard(m_name); }

private:
    const std::string m_path;
    std::string m_name;
    const Descriptor m_file;
    bool m_isGone = false; ///< no longer beside the target
};

} // namespace

FileReplacement::FileReplacement(const std::string& path, Manner manner) : m_path(path) {
    for (;;) {
        m_target = behindLinks(path);
        struct stat named {};
        if (::stat(m_target.c_str(), &named) != 0) {
            if (errno != ENOENT)
                fail(path, "can't look at the file", errno);
            return;
        }
        const bool isDevice = S_ISBLK(named.st_mode) || S_ISCHR(named.st_mode);
        if (!S_ISREG(named.st_mode) && !isDevice)
            throw Error(path + ": can't be replaced (expected a file or a device)");
        // A file's new content never goes through this descriptor. It is opened for writing all the same:
        // that its folder can be written is no leave to replace it.
        m_descriptor =
            retried([&] { return ::open(m_target.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); });
        if (m_descriptor < 0)
            fail(path, "can't open for writing", errno);
        m_inPlace = manner == Manner::IN_PLACE || isDevice || isOfDeviceTree(m_descriptor);
        struct stat locked {};
        const char* failed = nullptr;
        if (::flock(m_descriptor, LOCK_EX) != 0) // a signal may end the wait
            failed = "can't lock";
        else if (::fstat(m_descriptor, &locked) != 0)
            failed = "can't look at the file";
        const int error = errno;
        // Whoever held the lock before may have put a new file in the place of this one, or turned the link.
        if (!failed && ::stat(path.c_str(), &named) == 0 && isSameFile(locked, named))
            return;
        ::close(m_descriptor);
        m_descriptor = -1;
        if (failed)
            fail(path, failed, error);
    }
}

FileReplacement::~FileReplacement() {
    if (m_descriptor >= 0)
        ::close(m_descriptor); // and with it the lock
}

std::string FileReplacement::content(std::size_t limit) const {
    if (m_descriptor < 0) // what has appeared since is not locked
        fail(m_path, "can't open", ENOENT);
    const Descriptor file(retried([&] { return ::open(m_target.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (file.get() < 0)
        fail(m_path, "can't open", errno);
    std::string bytes(limit + 1, '\0');
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t got =
            retried([&] { return ::read(file.get(), bytes.data() + done, bytes.size() - done); });
        if (got < 0)
            fail(m_path, "can't read", errno);
        if (got == 0)
            break;
        done += static_cast<std::size_t>(got);
    }
    if (done > limit && !m_inPlace)
        throw Error(m_path + ": is larger than " + std::to_string(limit) +
                    " bytes, which is the most expected");
    bytes.resize(std::min(done, limit));
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
        if (m_descriptor < 0) {
            beside.setMode(modeOfNewFile());
        } else {
            struct stat old {};
            if (::fstat(m_descriptor, &old) != 0)
                fail(m_path, "can't look at the file", errno);
            beside.giveTo(old.st_uid, old.st_gid, old.st_mode & 07777);
        }
        beside.takePlaceOf(m_target);
    } catch (const Error& error) {
        throw Error(error.what() + beside.discard());
    }
}

void FileReplacement::writeInPlace(const std::string& bytes) const {
    ssize_t written = retried([&] { return ::pwrite(m_descriptor, bytes.data(), bytes.size(), 0); });
    if (written < 0 && errno == ESPIPE) // a device without places is at its start anyway
        written = retried([&] { return ::write(m_descriptor, bytes.data(), bytes.size()); });
    if (written < 0)
        fail(m_path, "can't write", errno);
    if (static_cast<std::size_t>(written) != bytes.size())
        throw Error(m_path + ": took only " + std::to_string(written) + " of " +
                    std::to_string(bytes.size()) + " bytes");
    // What is read afterwards shall come from the device, not from memory. Some devices have nothing to sync.
    if (retried([&] { return ::fsync(m_descriptor); }) != 0 && errno != EINVAL)
        fail(m_path, "can't sync", errno);
    static_cast<void>(::posix_fadvise(m_descriptor, 0, 0, POSIX_FADV_DONTNEED));
}

std::string discard(const std::string& file) {
    return ::unlink(file.c_str()) == 0 ? "" : "; " + file + " can't be removed: " + std::strerror(errno);
}

void replaceFile(const std::string& path, const std::string& bytes) {
    FileReplacement(path).commit(bytes);
}

} // namespace board
