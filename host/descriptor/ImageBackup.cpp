#include "descriptor/ImageBackup.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

#include <fcntl.h>

#include "base/Error.h"
#include "base/File.h"
#include "base/FileReplacement.h"

namespace fs = std::filesystem;

namespace board {

namespace {

[[noreturn]] void fail(const fs::path& path, const char* what, int error,
                       const std::string& more = "") {
    throw Error(path.string() + ": " + what + ": " + std::strerror(error) + more);
}

fs::path stateFolder() {
    const char* const state = std::getenv("XDG_STATE_HOME");
    const char* const home = std::getenv("HOME");
    fs::path folder;
    if (state && state[0] == '/')
        folder = fs::path(state);
    else if (home && home[0] == '/')
        folder = fs::path(home) / ".local/state";
    else
        throw Error(
            "there is no place for a backup (expected XDG_STATE_HOME or HOME to name a folder, or "
            "--backup FILE)");
    folder /= "boardctl";
    std::error_code error;
    fs::create_directories(folder, error);
    if (error)
        throw Error(folder.string() + ": can't make the folder for backups: " + error.message() +
                    " (expected a place that can be written, or --backup FILE)");
    return folder;
}

std::string dated(const std::string& image) {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    ::gmtime_r(&now, &utc);
    char date[] = "-YYYYMMDDTHHMMSSZ";
    std::strftime(date, sizeof date, "-%Y%m%dT%H%M%SZ", &utc);
    return fs::path(image).filename().string() + date;
}

/// A new file with a name of its own that begins with `start`.
std::string writeNew(const fs::path& start, const std::string& bytes) {
    std::string name = start.string() + ".XXXXXX";
    const int file = ::mkostemp(name.data(), O_CLOEXEC);
    if (file < 0)
        fail(start, "can't make the backup", errno);
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t written = ::write(file, bytes.data() + done, bytes.size() - done);
        if (written < 0 && errno != EINTR)
            break;
        done += written > 0 ? static_cast<std::size_t>(written) : 0;
    }
    const auto sync = [file] {
        int result = ::fsync(file);
        while (result != 0 && errno == EINTR)
            result = ::fsync(file);
        return result == 0;
    };
    const bool isWhole = done == bytes.size() && ::fchmod(file, modeOfNewFile()) == 0 && sync();
    const int error = errno;
    ::close(file);
    if (!isWhole)
        fail(start, "can't write the backup", error, discard(name));
    return name;
}

/// Where a backup shall stand, behind symbolic links: nowhere yet, or in a file that holds nothing.
fs::path placeFor(const std::string& image, const std::string& file) {
    std::error_code error;
    fs::path target = fs::weakly_canonical(file, error);
    if (error)
        throw Error(file + ": can't follow the path: " + error.message());
    const fs::file_status status = fs::status(target, error);
    if (!fs::exists(status))
        return target;
    if (!fs::is_regular_file(status))
        throw Error(file + ": can't take a backup (expected a file)");
    if (fs::equivalent(target, image, error))
        throw Error(file + ": is the image itself (expected another file for the backup)");
    if (fs::file_size(target, error) != 0)
        throw Error(file +
                    ": exists already, and may be the last good image (expected a new file for the "
                    "backup)");
    return target;
}

} // namespace

std::string keepImage(const std::string& bytes, const std::string& image, const std::string& file) {
    if (file.empty())
        return writeNew(stateFolder() / dated(image), bytes);
    const fs::path target = placeFor(image, file);
    const std::string written = writeNew(target, bytes);
    if (::rename(written.c_str(), target.c_str()) != 0) {
        const int error = errno;
        fail(file, "can't rename the backup into place", error, discard(written));
    }
    return file;
}

} // namespace board
