#include "descriptor/store/WriteJournal.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "base/Error.h"
#include "base/File.h"
#include "base/FileReplacement.h"
#include "descriptor/TagImage.h"
#include "descriptor/TagWords.h"
#include "descriptor/store/Sha256.h"
#include "descriptor/store/StateFolder.h"

namespace fs = std::filesystem;

namespace board {

namespace {

/// A device stores the bytes of a sector in ascending order, but may store the sectors of one write
/// in any order.
constexpr std::size_t SECTOR = 512;

/// How the names of a device's journals begin. The part after the dash tells apart devices whose
/// files have the same name.
std::string nameFor(const std::string& device) {
    std::error_code error;
    const fs::path path = fs::weakly_canonical(device, error);
    const std::string whole = error ? device : path.string();
    constexpr std::size_t DIGITS = 16;
    return "unfinished-" + sha256(whole).substr(0, DIGITS);
}

std::string hexOf(const std::string& bytes) {
    std::string digits;
    digits.reserve(2 * bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        digits += "0123456789abcdef"[byte >> 4];
        digits += "0123456789abcdef"[byte & 0xFU];
    }
    return digits;
}

std::string textOf(const std::string& device, const UnfinishedWrite& write) {
    nlohmann::ordered_json json = {{"device", fs::absolute(device).string()},
                                   {"old", hexOf(write.old)},
                                   {"found", hexOf(write.found)},
                                   {"new", hexOf(write.image)}};
    if (write.record)
        json["record"] = {{"file", hexOf(write.record->file)}, {"line", hexOf(write.record->line)}};
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

/// A journal makes this program write to a device and to a record, so only this user may have
/// written it. The folder belongs to another user if HOME does.
bool isOwn(const FileDescriptor& file) {
    const std::optional<FileStatus> found = tryExamine(file);
    constexpr mode_t WRITE_BY_OTHERS = 0022;
    return found && kindOf(found->mode) == FileKind::REGULAR && found->owner == ::geteuid() &&
           (found->mode & WRITE_BY_OTHERS) == 0;
}

/// Empty if the journal is incomplete, which means that its write never began, or if another user
/// may have written it.
std::optional<UnfinishedWrite> readJournal(const std::string& file) {
    constexpr std::size_t LARGEST = std::size_t{64} * MAX_IMAGE_SIZE; // with a long record
    const FileDescriptor opened = tryOpen(file, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    if (!opened.isOpen() || !isOwn(opened))
        return std::nullopt;
    const std::string text = readUpTo(opened, LARGEST, file);
    const auto json = nlohmann::json::parse(text, nullptr, false);
    UnfinishedWrite write;
    const auto take = [](const nlohmann::json& object, const char* key, std::string& bytes) {
        const auto found = object.is_object() ? object.find(key) : object.end();
        return found != object.end() && found->is_string() &&
               decodeHex(found->get<std::string>(), bytes) == std::string::npos;
    };
    if (!take(json, "old", write.old) || !take(json, "found", write.found) ||
        !take(json, "new", write.image))
        return std::nullopt;
    RecordLine record;
    if (json.contains("record") && take(json["record"], "file", record.file) &&
        take(json["record"], "line", record.line))
        write.record = record;
    return write;
}

std::string whole(const UnfinishedWrite& write) {
    std::string bytes = write.found;
    return bytes.replace(0, write.image.size(), write.image);
}

bool isMixture(const std::string& bytes, const UnfinishedWrite& write) {
    const std::string written = whole(write);
    if (bytes.size() > write.found.size()) // a file used as a device may grow
        return written.compare(0, bytes.size(), bytes) == 0;
    if (bytes.size() < write.found.size())
        return false;
    for (std::size_t start = 0; start < bytes.size(); start += SECTOR) {
        std::size_t at = start;
        const std::size_t end = std::min(start + SECTOR, bytes.size());
        while (at < end && bytes[at] == written[at])
            ++at;
        if (bytes.compare(at, end - at, write.found, at, end - at) != 0)
            return false;
    }
    return true;
}

std::vector<std::string> journalsOf(const std::string& device) {
    std::vector<std::string> files;
    const std::optional<std::string> folder = stateFolderPath();
    if (!folder || kindOf(*folder) == FileKind::MISSING)
        return files;
    const std::string start = nameFor(device) + ".";
    std::error_code error;
    for (fs::directory_iterator each(*folder, error); !error && each != fs::directory_iterator();
         each.increment(error))
        if (each->path().filename().string().rfind(start, 0) == 0)
            files.push_back(each->path().string());
    if (error)
        throw Error(*folder + ": can't look for an interrupted write: " + error.message());
    return files;
}

/// Appends the line unless the file has it already. Returns whether the file has the line now.
bool completeRecord(const RecordLine& record, std::vector<std::string>& notes) {
    try {
        const LineFile file(record.file);
        if (!file.holds(record.line)) {
            file.append(record.line);
            notes.push_back(record.file + ": an earlier write was not recorded; its line is there "
                                          "now");
        }
        return true;
    } catch (const Error& error) {
        notes.push_back(error.what() + std::string("; an earlier write is not recorded there"));
        return false;
    }
}

} // namespace

WriteJournal::WriteJournal(const std::string& device, const UnfinishedWrite& write)
    : m_device(device), m_write(write), m_file(writeNewFile(stateFolder() + "/" + nameFor(device),
                                                            textOf(device, write), "journal")) {}

std::string WriteJournal::remove() const {
    std::string left = discard(m_file);
    if (m_write.found == m_write.old)
        return left;
    for (const std::string& file : journalsOf(m_device))
        if (const auto repaired = readJournal(file); repaired && repaired->old == m_write.old)
            left += discard(file);
    return left;
}

JournalFindings readJournals(const std::string& device, const std::string& bytes, bool isDevice) {
    JournalFindings findings;
    for (const std::string& file : journalsOf(device)) {
        const std::optional<UnfinishedWrite> write = readJournal(file);
        const bool isDone = write && bytes == (isDevice ? whole(*write) : write->image);
        if (isDone && write->record && !completeRecord(*write->record, findings.notes))
            continue;
        if (!write || isDone || bytes == write->found || !isDevice)
            static_cast<void>(discard(file)); // the next run tries again
        else if (isMixture(bytes, *write))
            findings.unfinished = write;
    }
    return findings;
}

std::optional<UnfinishedWrite> findUnfinished(const std::string& device, const std::string& bytes) {
    std::optional<UnfinishedWrite> found;
    for (const std::string& file : journalsOf(device)) {
        const std::optional<UnfinishedWrite> write = readJournal(file);
        if (write && bytes != write->found && bytes != whole(*write) && isMixture(bytes, *write))
            found = write;
    }
    return found;
}

} // namespace board
