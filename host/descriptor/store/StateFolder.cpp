#include "descriptor/store/StateFolder.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include <fcntl.h>

#include "base/Error.h"
#include "base/File.h"

namespace fs = std::filesystem;

namespace board {

std::optional<std::string> stateFolderPath() {
    const char* const state = std::getenv("XDG_STATE_HOME");
    const char* const home = std::getenv("HOME");
    if (state && state[0] == '/')
        return (fs::path(state) / "boardctl").string();
    if (home && home[0] == '/')
        return (fs::path(home) / ".local/state/boardctl").string();
    return std::nullopt;
}

std::string stateFolder() {
    const std::optional<std::string> folder = stateFolderPath();
    if (!folder)
        throw Error("no folder for a backup (expected XDG_STATE_HOME or HOME to name a folder, or "
                    "--backup FILE)");
    std::error_code error;
    if (fs::create_directories(*folder, error)) // for this user only, whatever the umask is
        fs::permissions(*folder, fs::perms::owner_all, error);
    if (error)
        throw Error(*folder + ": can't make the folder for backups: " + error.message() +
                    " (expected a folder that can be written, or --backup FILE)");
    return *folder;
}

std::string writeNewFile(const std::string& start, const std::string& bytes, const char* what) {
    const std::string purpose(what);
    std::string name;
    const FileDescriptor file =
        createUnique(start, name, start, ("can't make the " + purpose).c_str());
    const auto isKept = [&] {
        if (!tryWriteAll(file, bytes) || !trySync(file))
            return false;
        const FileDescriptor folder =
            tryOpen(fs::absolute(name).parent_path().string(), O_RDONLY | O_DIRECTORY);
        return folder.isOpen() && trySync(folder);
    };
    if (!isKept()) {
        const int error = errno;
        throw Error(start + ": can't write the " + purpose + ": " + reasonOf(error) +
                    discard(name));
    }
    return name;
}

} // namespace board
