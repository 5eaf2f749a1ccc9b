#include <algorithm>
#include <filesystem>
#include <system_error>

#include "base/File.h"
#include "base/Text.h"
#include "bd/BdCommands.h"
#include "bd/BdSource.h"
#include "bd/edit/Edit.h"
#include "bd/edit/StationRecord.h"
#include "descriptor/DescriptorCheck.h"
#include "descriptor/TagsJson.h"
#include "descriptor/compare/ExpectedList.h"
#include "program/Command.h"
#include "program/Help.h"

namespace fs = std::filesystem;

namespace boardctl {

namespace {

struct WriteWords : EditWords {
    std::string source, fill, record;
};

[[noreturn]] void refuse(const std::string& source, const std::string& why,
                         const std::string& forced) {
    throw board::Error(source + ": " + why + "; nothing was written (--force writes " + forced +
                       ")");
}

/// Returns the image in `bytes`, which were read from `source`. Throws board::Error if there are no
/// bytes or, unless `force` is set, if the image should not be on a device.
board::TagImage imageFrom(const std::string& bytes, const std::string& source, bool force) {
    if (bytes.empty())
        throw board::Error(source + ": is empty (expected an image or a JSON list of tags)");
    const bool isList = board::isJsonList(bytes);
    const std::vector<BD::Tag> list =
        isList
            ? board::tagsFromJson(bytes, source,
                                  force ? board::TagsAfterEnd::KEPT : board::TagsAfterEnd::REFUSED)
            : std::vector<BD::Tag>();
    board::TagImage image(isList ? board::imageOf(list) : bytes);
    if (force)
        return image;
    if (image.isCorrupt())
        refuse(source, *image.fault(), "the tags before the fault");
    if (image.tags().empty())
        refuse(source, "holds no tags", "an empty descriptor");
    std::vector<std::string> wrong;
    for (const BD::Tag& each : list) // a size that only padding makes right is wrong
        if (const auto size = board::wrongSizeOf(each);
            size && !board::wrongSizeOf(board::asLoaded(each)))
            wrong.push_back(board::tagName(each.id) + ": has " + *size);
    for (const board::Finding& each :
         board::checkImage(board::TagImage(board::terminated(image)), true))
        if (each.weight != board::Finding::Weight::NOTE)
            wrong.push_back("at " + std::to_string(each.offset) + ": " + each.text);
    constexpr std::size_t MOST = 3; // so that the message stays readable
    if (const std::size_t count = wrong.size(); count > MOST) {
        wrong.resize(MOST);
        wrong.push_back(std::to_string(count - MOST) + " more");
    }
    if (!wrong.empty())
        refuse(source, board::join(wrong, "; "), "it anyway");
    return image;
}

/// Throws board::Error if the record would be appended to one of the other files of the command.
void expectOwnFile(const std::string& record, const std::vector<std::string>& others) {
    std::error_code
        error; // ignored: a missing record is made; other faults appear when it is opened
    const auto same = std::find_if(others.begin(), others.end(), [&](const std::string& other) {
        return !record.empty() && !other.empty() &&
               (fs::equivalent(record, other, error) ||
                fs::weakly_canonical(record, error) == fs::weakly_canonical(other, error));
    });
    if (same != others.end())
        throw board::Error(record + ": is " + *same +
                           " itself (expected another file for the record)");
}

int write(const Options& options, const WriteWords& words) {
    if (words.image == STANDARD_STREAM)
        throw WrongCall("-i -: standard output is not written (expected an image file)");
    if (words.record == STANDARD_STREAM)
        throw WrongCall("--record -: standard output has the result (expected a file)");
    WriteWords filled = words;
    if (!words.fill.empty())
        filled.manner.fill = static_cast<char>(std::stoi(words.fill, nullptr, 16));
    StationRecord record;
    const auto storing = [&](const board::DescriptorSource& target,
                             const board::StoreManner& manner, const board::Confirm& confirm,
                             board::StoreOutcome& outcome) {
        expectOwnFile(words.record, {target.path(), words.source, manner.backup});
        if (!manner.dryRun)
            record.open(words.record);
        board::StoreManner recorded = manner;
        if (!words.record.empty())
            recorded.record = {fs::absolute(words.record).string(),
                               [&](const board::StoreOutcome& outcomeSoFar) {
                                   return StationRecord::line(target.path(), outcomeSoFar, "");
                               }};
        const bool isPiped = words.source == STANDARD_STREAM;
        const board::TagImage image = imageFrom(
            isPiped ? board::readStandardInput(board::MAX_TAGS_JSON)
                    : board::readLocked(words.source, board::MAX_TAGS_JSON, lockWait(options)),
            isPiped ? "standard input" : words.source, manner.force);
        board::writeDescriptor(target, recorded, image, confirm, outcome);
    };
    return store(options, filled, false, storing,
                 [&](const std::string& path, const board::StoreOutcome& outcome,
                     const std::string& error) { record.append(path, outcome, error); });
}

} // namespace

void addBdWrite(CLI::App& bd, Options& options) {
    const auto [command, words] = addCommand<WriteWords, write>(
        bd, options, "write", "Write a whole image, and a terminator behind it");
    command
        .add_option("SOURCE", words.source,
                    "An image, a backup or a JSON list of tags; - for standard input")
        ->check(notEmpty())
        ->type_name("FILE")
        ->required();
    addStoreOptions(command, words, "Write what `bd check` would find fault with");
    command
        .add_option("--fill", words.fill,
                    "Clear everything behind the terminator with this byte, such as FF; by default "
                    "it stays")
        ->check(hexByte())
        ->type_name("BYTE");
    command
        .add_option("--record", words.record,
                    "Append a JSON line: time, device, checksums before and after, serial number, "
                    "addresses, result")
        ->check(notEmpty())
        ->type_name("FILE");
    addExamples(command, {"bd write unit.bin", "bd write tags.json -i image.bin",
                          "bd write unit.bin -y -q --fill FF --record station.log"});
}

} // namespace boardctl
