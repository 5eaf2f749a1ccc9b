#include "devices/PipeReaders.h"

#include <cctype>
#include <filesystem>
#include <string>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace board {

namespace {

namespace fs = std::filesystem;

/// Whether the process reads the pipe; empty if its descriptors can't be listed.
std::optional<bool> isReadBy(const std::string& process, const FileIdentity& pipe) {
    std::error_code error;
    for (fs::directory_iterator each(process + "/fd", error), end; !error && each != end;
         each.increment(error)) {
        const std::string descriptor = each->path().string();
        if (tryIdentify(descriptor) != pipe)
            continue;
        const std::optional<FileStatus> link = tryExamine(descriptor);
        if (link && (link->mode & S_IRUSR) != 0) // open for reading
            return true;
    }
    // A process that has ended meanwhile reads nothing.
    return error && fs::exists(process, error) ? std::nullopt : std::optional(false);
}

} // namespace

std::optional<bool> isReadByThisUser(const FileIdentity& pipe) {
    if (!tryExamine("/proc/1")) // some processes are hidden
        return std::nullopt;
    std::error_code error;
    std::optional<bool> answer = false;
    for (fs::directory_iterator each("/proc", error), end; !error && each != end;
         each.increment(error)) {
        const std::string process = each->path().string();
        if (std::isdigit(static_cast<unsigned char>(process.back())) == 0)
            continue;
        const std::optional<FileStatus> status = tryExamine(process);
        if (!status || status->owner != ::geteuid())
            continue;
        const std::optional<bool> isReader = isReadBy(process, pipe);
        if (isReader == true)
            return true;
        if (!isReader)
            answer.reset();
    }
    return error ? std::nullopt : answer;
}

} // namespace board
