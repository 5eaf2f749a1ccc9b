#include <iostream>

#include "base/File.h"
#include "base/Text.h"
#include "bd/BdCommands.h"
#include "bd/BdSource.h"
#include "descriptor/TagWords.h"
#include "descriptor/TagsJson.h"
#include "descriptor/compare/TagCompare.h"
#include "output/Json.h"
#include "program/Command.h"
#include "program/Help.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

struct CompareWords {
    std::string expected;
    std::string found; ///< empty: the board's descriptor
    bool quiet = false;
};

const char* nameOf(board::TagDifference::Kind kind) {
    switch (kind) {
    case board::TagDifference::Kind::MISSING:
        return "missing";
    case board::TagDifference::Kind::EXTRA:
        return "extra";
    case board::TagDifference::Kind::DIFFERENT:
        return "different";
    case board::TagDifference::Kind::ORDER:
        return "order";
    case board::TagDifference::Kind::TERMINATOR:
        return "terminator";
    case board::TagDifference::Kind::CORRUPT:
        break;
    }
    return "corrupt";
}

ordered_json textOrNull(const std::string& text, bool isThere) {
    return isThere ? ordered_json(text) : ordered_json();
}

ordered_json toJson(const board::TagDifference& difference) {
    using Kind = board::TagDifference::Kind;
    const Kind kind = difference.kind;
    const bool isOfTag = kind != Kind::TERMINATOR && kind != Kind::CORRUPT;
    ordered_json json = {{"kind", nameOf(kind)}};
    if (isOfTag) {
        json["id"] = difference.id;
        json["name"] = board::tagName(difference.id);
        json["index"] = difference.index;
    }
    json["offset"] = difference.offset ? ordered_json(*difference.offset) : ordered_json();
    if (isOfTag) {
        json["expected"] = textOrNull(difference.expected, kind != Kind::EXTRA);
        json["found"] = textOrNull(difference.found, kind != Kind::MISSING);
    }
    json["text"] = difference.text;
    return json;
}

board::ExpectedList readExpected(const Options& options, const std::string& path) {
    if (path == STANDARD_STREAM)
        return board::readExpected(board::readStandardInput(board::MAX_TAGS_JSON),
                                   "standard input");
    return board::readExpected(board::readLocked(path, board::MAX_TAGS_JSON, lockWait(options)),
                               path);
}

int compare(const Options& options, const CompareWords& words) {
    if (words.expected == STANDARD_STREAM && words.found == STANDARD_STREAM)
        throw WrongCall("standard input can be read only once (expected one -)");
    const board::ExpectedList expected = readExpected(options, words.expected);
    const BdSource chosen(options, words.found);
    const std::string& path = chosen.source().path();
    const std::string name = path.empty() ? "standard input" : path;
    const board::TagImage found = chosen.source().load();
    const auto differences = board::compareTags(expected, found);
    const int status = differences.empty() ? DONE : FOUND;
    if (options.json) {
        ordered_json list = ordered_json::array();
        for (const board::TagDifference& each : differences)
            list.push_back(toJson(each));
        printJson({{"expected", words.expected},
                   {"found", name},
                   {"result", differences.empty() ? "equal" : "different"},
                   {"tags", {{"expected", expected.tags.size()}, {"found", found.tags().size()}}},
                   {"differences", std::move(list)}});
        return status;
    }
    if (words.quiet)
        return status;
    for (const board::TagDifference& each : differences)
        std::cout << each.text << "\n";
    const std::size_t count = differences.empty() ? expected.tags.size() : differences.size();
    std::cout << board::printable(name) << ": " << count
              << (differences.empty() ? count == 1 ? " tag, as" : " tags, as"
                  : count == 1        ? " difference from what is"
                                      : " differences from what is")
              << " expected\n";
    return status;
}

} // namespace

void addBdCompare(CLI::App& bd, Options& options) {
    const auto [command, words] = addCommand<CompareWords, compare>(
        bd, options, "compare",
        "Compare an image tag by tag with what is expected; exits with 3 if they differ");
    command
        .add_option("EXPECTED", words.expected,
                    "An image, or a list for `bd build` in which patterns can replace values: any, "
                    "size, matches, from and to. - for standard input")
        ->check(notEmpty())
        ->type_name("FILE")
        ->required();
    addImage(command, "-i,--image,FOUND", words.found, READ_IMAGE);
    command.add_flag("-q,--quiet", words.quiet, "Print nothing for people");
    addExamples(command, {"bd compare unit.bin", "bd compare expected.json unit.bin",
                          "bd compare - <unit.json --format json"});
}

} // namespace boardctl
