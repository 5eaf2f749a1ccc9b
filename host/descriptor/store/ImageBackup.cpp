#include "descriptor/store/ImageBackup.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <map>
#include <random>
#include <string_view>
#include <tuple>

#include "base/Error.h"
#include "base/File.h"
#include "base/Text.h"
#include "descriptor/TagImage.h"
#include "descriptor/TagWords.h"
#include "descriptor/store/StateFolder.h"

#include <fcntl.h>

namespace fs = std::filesystem;

namespace board {

namespace {

/// The text as part of a file's name: with dashes for unsuitable characters, and not too long.
std::string forName(std::string text) {
    constexpr std::size_t LONGEST = 60;
    for (char& c : text)
        if ((c < '0' || c > '9') && (c < 'A' || c > 'Z') && (c < 'a' || c > 'z') && c != '.' &&
            c != '_')
            c = '-';
    return text.substr(0, LONGEST);
}

/// How a backup's name begins. Every EEPROM is named "eeprom", or "eeprom.bin" on a simulated
/// board, so the name of its folder is added.
std::string deviceName(const std::string& image) {
    const fs::path path = fs::path(image).lexically_normal();
    const fs::path folder = path.parent_path();
    const std::string file = forName(path.filename().string());
    const bool isNamedByFolder = folder.has_filename() && folder != "/dev";
    return isNamedByFolder ? forName(folder.filename().string()) + "-" + file : file;
}

std::string serialName(const std::string& bytes) {
    const std::string serial = forName(serialOf(TagImage(bytes)));
    return serial.empty() ? "" : "-" + serial;
}

/// Adds six letters that make a file's name unique.
std::string unusedName(const std::string& start) {
    constexpr std::size_t LETTERS = 6;
    std::random_device random;
    std::uniform_int_distribution<int> letter('a', 'z');
    for (;;) {
        std::string name = start;
        for (std::size_t i = 0; i < LETTERS; ++i)
            name += static_cast<char>(letter(random));
        if (kindOf(name) == FileKind::MISSING)
            return name;
    }
}

/// What the name of a backup ends with: the time as `now` returns it, and the six letters of
/// `unusedName`. Here, '0' stands for any digit and 'a' for any letter or digit.
constexpr std::string_view SAMPLE_END = "-00000000T000000Z.aaaaaa";
constexpr std::size_t TIME_LENGTH = SAMPLE_END.find('.') - 1;

bool isBackupName(const std::string& name) {
    const auto isLike = [](char sample, char c) {
        const bool isDigit = c >= '0' && c <= '9';
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        return sample == '0' ? isDigit : sample == 'a' ? isDigit || isLetter : c == sample;
    };
    // The name of the device, and perhaps the serial number, comes before this end.
    return name.size() > SAMPLE_END.size() &&
           std::equal(SAMPLE_END.rbegin(), SAMPLE_END.rend(), name.rbegin(), isLike);
}

std::string now() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    ::gmtime_r(&now, &utc);
    char date[] = "YYYYMMDDTHHMMSSZ";
    std::strftime(date, sizeof date, "%Y%m%dT%H%M%SZ", &utc);
    return date;
}

/// The path of the backup `file` after following symbolic links. Throws Error unless the file is
/// missing, is empty or holds `bytes`.
std::string targetFor(const std::string& image, const std::string& file, const std::string& bytes) {
    std::error_code error;
    fs::path target = fs::weakly_canonical(fs::absolute(file, error), error);
    if (error)
        throw Error(file + ": can't follow the path: " + error.message());
    const fs::file_status status = fs::status(target, error);
    if (!fs::exists(status))
        return target.string();
    if (!fs::is_regular_file(status))
        throw Error(file + ": can't hold a backup (expected a file)");
    if (fs::equivalent(target, image, error))
        throw Error(file + ": is the image itself (expected another file for the backup)");
    const auto size = fs::file_size(target, error);
    const bool isKept =
        size == bytes.size() &&
        readUpTo(openFile(target.string(), O_RDONLY | O_NONBLOCK), bytes.size(), file) == bytes;
    if (size != 0 && !isKept)
        throw Error(file +
                    ": exists already, and may be the last good image (expected a new file for the "
                    "backup)");
    return target.string();
}

/// Throws Error if the file can't be read. `name` is the file's name up to the time: the device and
/// the serial number.
Backup backupOf(const std::string& file, std::string name, const std::string& time) {
    const std::string bytes = readFile(file, MAX_IMAGE_SIZE);
    const TagImage image(bytes);
    const std::string serial = serialName(bytes);
    const std::size_t start = name.size() - std::min(name.size(), serial.size());
    if (!serial.empty() && name.compare(start, serial.size(), serial) == 0)
        name.erase(start);
    return {file, name, serialOf(image), time, bytes.size(), image.tags().size()};
}

} // namespace

std::string keepImage(const std::string& bytes, const std::string& image, const FileAccess& access,
                      const std::string& file) {
    if (file.empty()) {
        const std::string folder = stateFolder() + "/", device = deviceName(image);
        std::string target = unusedName(folder + device + serialName(bytes) + "-" + now() + ".");
        putNewFile({target, folder + device, target, access, true}, bytes);
        return target;
    }
    const std::string target = targetFor(image, file, bytes);
    putNewFile({file, folderOf(target) + fileNameOf(image), target, access, true}, bytes);
    return file;
}

BackupList listBackups() {
    const std::optional<std::string> folder = stateFolderPath();
    BackupList list;
    if (!folder || kindOf(*folder) == FileKind::MISSING)
        return list;
    std::error_code error;
    std::map<std::string, fs::file_time_type> changed; // orders the backups of one second
    for (fs::directory_iterator each(*folder, error); !error && each != fs::directory_iterator();
         each.increment(error)) {
        const std::string file = each->path().string(), name = fileNameOf(file);
        std::error_code gone; // another program may prune the folder
        if (!isBackupName(name) || !each->is_regular_file(gone))
            continue;
        const std::size_t end = name.size() - SAMPLE_END.size();
        try {
            list.backups.push_back(
                backupOf(file, name.substr(0, end), name.substr(end + 1, TIME_LENGTH)));
            changed[file] = each->last_write_time(gone);
        } catch (const Error& failure) {
            if (each->exists(gone))
                list.unreadable.push_back({file, failure.what()});
        }
    }
    if (error)
        throw Error(*folder + ": can't list the backups: " + error.message());
    std::sort(list.backups.begin(), list.backups.end(), [&](const Backup& a, const Backup& b) {
        return std::tie(b.time, changed.at(b.file), b.file) <
               std::tie(a.time, changed.at(a.file), a.file);
    });
    return list;
}

std::vector<Backup> backupsBeyond(const std::vector<Backup>& all, std::size_t count) {
    std::map<std::string, std::size_t> kept;
    std::vector<Backup> beyond;
    for (const Backup& each : all)
        if (kept[each.device]++ >= count)
            beyond.push_back(each);
    return beyond;
}

} // namespace board
