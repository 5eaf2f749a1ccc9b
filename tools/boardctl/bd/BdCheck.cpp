#include <algorithm>
#include <iostream>

#include "bd/BdCommands.h"
#include "bd/BdSource.h"
#include "descriptor/DescriptorCheck.h"
#include "output/Json.h"
#include "program/Command.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

struct CheckWords {
    std::string image;
};

const char* nameOf(board::Finding::Weight weight) {
    switch (weight) {
    case board::Finding::Weight::CORRUPT:
        return "corrupt";
    case board::Finding::Weight::WARNING:
        return "warning";
    case board::Finding::Weight::NOTE:
        break;
    }
    return "note";
}

void printForPeople(const board::TagImage& image, const std::vector<board::Finding>& findings) {
    for (const board::Finding& finding : findings)
        std::cout << "at " << finding.offset << ": " << nameOf(finding.weight) << ": "
                  << finding.text << "\n";
    const std::size_t tags = image.tags().size();
    std::cout << tags << (tags == 1 ? " tag" : " tags") << " in " << image.usedBytes() << " of "
              << image.bytes().size() << " bytes" << (image.isCorrupt() ? "; CORRUPT" : "") << "\n";
}

void printForPrograms(const board::TagImage& image, const std::vector<board::Finding>& findings) {
    ordered_json list = ordered_json::array();
    for (const board::Finding& finding : findings)
        list.push_back({{"offset", finding.offset},
                        {"weight", nameOf(finding.weight)},
                        {"text", finding.text}});
    printJson({{"corrupt", image.isCorrupt()},
               {"size", image.bytes().size()},
               {"used", image.usedBytes()},
               {"tags", image.tags().size()},
               {"findings", std::move(list)}});
}

int check(const Options& options, const CheckWords& words) {
    const BdSource chosen(options, words.image);
    return printImage(chosen.source(), [&](const board::TagImage& image) {
        const auto findings = board::checkImage(image, chosen.source().isDevice());
        if (options.json)
            printForPrograms(image, findings);
        else
            printForPeople(image, findings);
        const bool isGood =
            std::all_of(findings.begin(), findings.end(), [](const board::Finding& finding) {
                return finding.weight == board::Finding::Weight::NOTE;
            });
        return isGood ? DONE : FOUND;
    });
}

} // namespace

void addBdCheck(CLI::App& bd, Options& options) {
    const auto [command, words] = addCommand<CheckWords>(
        bd, options, "check",
        "List what is wrong with an image; exits with 3 if it is corrupt or after a warning",
        check);
    addImageWord(command, words.image);
}

} // namespace boardctl
