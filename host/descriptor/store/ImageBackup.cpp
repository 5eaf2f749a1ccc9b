#include "descriptor/store/ImageBackup.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "base/Error.h"
#include "base/File.h"

namespace fs = std::filesystem;

namespace board {

namespace {

fs::path stateFolder() {
    const char* const state = std::getenv("XDG_STATE_HOME");
    const char* const home = std::getenv("HOME");
    fs::path folder;
    if (state && state[0] == '/')
        folder = fs::path(state);
    else if (home && home[0] == '/')
        folder = fs::path(home) / ".local/state";
    else
        throw Error("no folder for a backup (expected XDG_STATE_HOME or HOME to name a folder, or "
                    "--backup FILE)");
    folder /= "boardctl";
    std::error_code error;
    fs::create_directories(folder, error);
    if (error)
        throw Error(folder.string() + ": can't make the folder for backups: " + error.message() +
                    " (expected a folder that can be written, or --backup FILE)");
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

/// Writes a new file with a unique name that begins with `start`; returns the name.
std::string writeNew(const std::string& start, const std::string& bytes) {
    std::string name;
    const FileDescriptor file = createUnique(start, name, start, "can't make the backup");
    if (!tryWriteAll(file, bytes) || !trySetMode(file, modeOfNewFile()) || !trySync(file)) {
        const int error = errno;
        throw Error(start + ": can't write the backup: " + reasonOf(error) + discard(name));
    }
    return name;
}

/// The path of the backup `file` after following symbolic links. It must not exist yet, or be
/// empty.
std::string targetFor(const std::string& image, const std::string& file) {
    std::error_code error;
    fs::path target = fs::weakly_canonical(file, error);
    if (error)
        throw Error(file + ": can't follow the path: " + error.message());
    const fs::file_status status = fs::status(target, error);
    if (!fs::exists(status))
        return target.string();
    if (!fs::is_regular_file(status))
        throw Error(file + ": can't hold a backup (expected a file)");
    if (fs::equivalent(target, image, error))
        throw Error(file + ": is the image itself (expected another file for the backup)");
    if (fs::file_size(target, error) != 0)
        throw Error(file +
                    ": exists already, and may be the last good image (expected a new file for the "
                    "backup)");
    return target.string();
}

} // namespace

std::string keepImage(const std::string& bytes, const std::string& image, const std::string& file) {
    if (file.empty())
        return writeNew((stateFolder() / dated(image)).string(), bytes);
    const std::string target = targetFor(image, file);
    const std::string written = writeNew(target, bytes);
    if (!tryRename(written, target)) {
        const int error = errno;
        throw Error(file + ": can't rename the backup into place: " + reasonOf(error) +
                    discard(written));
    }
    return file;
}

} // namespace board
