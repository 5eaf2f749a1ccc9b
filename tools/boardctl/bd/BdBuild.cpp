#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include "base/File.h"
#include "base/FileReplacement.h"
#include "base/Text.h"
#include "bd/Assignments.h"
#include "bd/BdCommands.h"
#include "bd/BdSource.h"
#include "descriptor/DescriptorEdit.h"
#include "descriptor/TagsJson.h"
#include "descriptor/store/ImageBackup.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "program/Command.h"
#include "program/Help.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

struct BuildWords {
    std::string source, target, backup;
    std::vector<std::string> assignments;
    bool isExact = false, force = false, quiet = false;
    std::size_t size = 0; ///< 0: as large as the tags need
    std::string fill;     ///< empty: FF
};

struct Built {
    std::string image;
    std::size_t tags = 0; ///< including the terminator
    std::size_t used = 0; ///< bytes of the image without its filling
};

std::vector<BD::Tag> readTags(const Options& options, const BuildWords& words) {
    const auto afterEnd = words.isExact ? board::TagsAfterEnd::KEPT : board::TagsAfterEnd::REFUSED;
    if (words.source == STANDARD_STREAM)
        return board::tagsFromJson(board::readStandardInput(board::MAX_TAGS_JSON), "standard input",
                                   afterEnd);
    return board::tagsFromJson(
        board::readLocked(words.source, board::MAX_TAGS_JSON, lockWait(options)), words.source,
        afterEnd);
}

void expectSizes(const board::DescriptorEdit& edit) {
    for (const board::TagChange& change : edit.changes())
        if (change.wrongSize)
            throw board::Error(board::tagName(change.after->id) + ": has " + *change.wrongSize +
                               "; nothing was written (--force builds it anyway)");
}

Built imageOf(const Options& options, const BuildWords& words,
              const std::vector<board::Assignment>& assignments) {
    const std::vector<BD::Tag> tags = readTags(options, words);
    const board::TagImage listed(board::imageOf(tags));
    board::DescriptorEdit edit(listed);
    for (const board::Assignment& each : assignments)
        edit.put(each);
    if (!words.force)
        expectSizes(edit);
    const bool endsOpen = words.isExact && !listed.terminator();
    const auto changes = edit.changes();
    const auto added = std::count_if(changes.begin(), changes.end(),
                                     [](const board::TagChange& each) { return !each.before; });
    Built built{edit.image(), tags.size() + static_cast<std::size_t>(added), 0};
    if (endsOpen) {
        --built.tags;
        built.image.resize(built.image.size() -
                           board::imageOf({BD::Tag(board::TERMINATOR_TAG)}).size());
    }
    built.image += listed.bytes().substr(listed.usedBytes());
    built.used = built.image.size();
    const std::string needed =
        words.source + ": the image would have " + std::to_string(built.used) + " bytes (expected ";
    if (built.used > board::MAX_IMAGE_SIZE)
        throw board::Error(needed + "at most " + std::to_string(board::MAX_IMAGE_SIZE) + ")");
    if (words.size > 0 && built.used >= words.size)
        throw board::Error(needed + "fewer than the " + std::to_string(words.size) +
                           " of --size, because a board needs one more)");
    built.image.resize(
        std::max(words.size, built.used),
        static_cast<char>(std::stoi(words.fill.empty() ? "FF" : words.fill, nullptr, 16)));
    return built;
}

/// Stores the image in the target file. If the file has other content, keeps that content in a
/// backup first. Returns whether anything was written.
bool store(const Options& options, const BuildWords& words, const std::string& image,
           std::string& backup) {
    board::FileReplacement target(words.target, board::FileReplacement::Manner::BY_KIND,
                                  lockWait(options));
    // A character device such as /dev/null is not read: its content may have no end.
    if (target.exists() && board::kindOf(words.target) != board::FileKind::CHARACTER_DEVICE) {
        const std::string old = target.content(board::MAX_TAGS_JSON);
        if (target.isInPlace() ? old.compare(0, image.size(), image) == 0 : old == image)
            return false;
        if (!old.empty())
            backup = board::keepImage(old, words.target, target.access(), words.backup);
    }
    target.commit(image);
    return true;
}

int build(const Options& options, const BuildWords& words) {
    const bool isPrinted = words.target == STANDARD_STREAM;
    if (isPrinted && options.json)
        throw WrongCall("-o - writes the image to standard output, so it excludes --format json");
    if (!words.fill.empty() && words.size == 0)
        throw WrongCall("--fill needs --size, the size to fill the image up to");
    const auto assignments = parseToPut(words.assignments);
    Built built;
    std::string backup;
    bool isWritten = false;
    try {
        built = imageOf(options, words, assignments);
        if (!isPrinted)
            isWritten = store(options, words, built.image, backup);
    } catch (const board::Error& error) {
        if (!options.json)
            throw;
        complain(error.what());
        printJson({{"image", words.target}, {"result", "failed"}, {"error", error.what()}});
        return FAILED;
    }
    if (isPrinted) {
        std::cout << built.image;
        return DONE;
    }
    const std::string note = backup.empty() ? "" : "; the old file is in " + backup;
    if (options.json) {
        ordered_json json = {{"image", words.target},
                             {"tags", built.tags},
                             {"size", built.image.size()},
                             {"used", built.used},
                             {"result", isWritten ? "written" : "unchanged"},
                             {"backup", nullptr}};
        if (!backup.empty())
            json["backup"] = backup;
        printJson(json);
    } else if (!backup.empty() && !words.quiet) {
        std::cout << board::printable(words.target + ": written" + note) << "\n";
    }
    if (flushOutput())
        return DONE;
    if (isWritten)
        complain(words.target + ": was written anyway" + note);
    return FAILED;
}

} // namespace

void addBdBuild(CLI::App& bd, Options& options) {
    const auto [command, words] = addCommand<BuildWords, build>(
        bd, options, "build", "Make an image of the tags in a JSON file, ended by a terminator");
    command
        .add_option("TAGS", words.source,
                    "What `bd dump` prints: [{\"id\":45,\"data\":\"1234abcd\"}, ...]; names and "
                    "types can be used too. - for standard input")
        ->check(notEmpty())
        ->type_name("FILE")
        ->required();
    addAssignments(command, words.assignments, "It sets a tag of the list, or adds it");
    command
        .add_option("-o,--output", words.target,
                    "The image file; if this fails, an existing file does not change. - for "
                    "standard output")
        ->check(notEmpty())
        ->type_name("IMAGE")
        ->required();
    command.add_flag("--exact", words.isExact,
                     "Build just what is listed: add no terminator, and keep tags after it");
    command.add_option("--size", words.size, "Fill the image up to this many bytes")
        ->transform(decimal(1, board::MAX_IMAGE_SIZE))
        ->type_name("BYTES");
    command.add_option("--fill", words.fill, "The byte for that, in hexadecimal; by default FF")
        ->check(hexByte())
        ->type_name("BYTE");
    command
        .add_option("--backup", words.backup,
                    "New file for the old content of IMAGE; by default a dated one in the user's "
                    "state folder")
        ->check(notEmpty())
        ->type_name("FILE");
    command.add_flag("--force", words.force, "Build tags of a wrong size from assignments too");
    command.add_flag("-q,--quiet", words.quiet, "Print nothing for people if all went well");
    addExamples(command, {"bd dump old.bin >tags.json", "bd build tags.json -o new.bin",
                          "bd build template.json 5=text:SN-000123 -o unit.bin --size 512"});
}

} // namespace boardctl
