#include <algorithm>
#include <iostream>
#include <sstream>

#include "base/Text.h"
#include "bd/BdCommands.h"
#include "bd/BdSource.h"
#include "descriptor/DescriptorCheck.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "program/Command.h"
#include "program/Help.h"
#include "program/StopSignals.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

struct CheckWords {
    std::vector<std::string> images; ///< none: the board's descriptor
    std::string required;            ///< tags, separated by commas
    bool isStrict = false, quiet = false;
};

const char* nameOf(board::Finding::Weight weight) {
    switch (weight) {
    case board::Finding::Weight::CORRUPT:
        return "corrupt";
    case board::Finding::Weight::WARNING:
    case board::Finding::Weight::BLANK:
        return "warning";
    case board::Finding::Weight::NOTE:
        break;
    }
    return "note";
}

/// Each line begins with `start`, which names the image if there are several.
void printForPeople(const board::TagImage& image, const std::vector<board::Finding>& findings,
                    const std::string& start) {
    for (const board::Finding& finding : findings)
        std::cout << start << "at " << finding.offset << ": " << nameOf(finding.weight) << ": "
                  << finding.text << "\n";
    const std::size_t tags = image.tags().size();
    std::cout << start << tags << (tags == 1 ? " tag" : " tags") << " in " << image.usedBytes()
              << " of " << image.bytes().size() << " bytes"
              << (image.isCorrupt() ? "; CORRUPT" : "") << "\n";
}

ordered_json toJson(const board::TagImage& image, const std::vector<board::Finding>& findings) {
    ordered_json list = ordered_json::array();
    for (const board::Finding& finding : findings)
        list.push_back({{"offset", finding.offset},
                        {"weight", nameOf(finding.weight)},
                        {"text", finding.text}});
    return {{"corrupt", image.isCorrupt()},
            {"size", image.bytes().size()},
            {"used", image.usedBytes()},
            {"tags", image.tags().size()},
            {"findings", std::move(list)}};
}

/// Checks images one after the other.
class Check {
public:
    Check(const Options& options, const CheckWords& words) : m_options(options), m_words(words) {
        if (words.required.empty())
            return;
        std::istringstream names(words.required + ','); // so that an empty last name counts
        for (std::string name; std::getline(names, name, ',');)
            m_required.push_back(orWrongCall([&] {
                try {
                    return board::parseTagPlace(name);
                } catch (const board::Error& error) {
                    throw board::Error(std::string("--require: ") + error.what());
                }
            }));
    }

    /// Checks one image. Prints the findings or, for JSON, sets `json`. Returns the exit status.
    int check(const std::string& image, const std::string& start, ordered_json& json) const {
        const BdSource chosen(m_options, image);
        const board::TagImage loaded = chosen.source().load();
        const auto findings = board::checkImage(loaded, chosen.source().isDevice(), m_required);
        if (m_options.json)
            json = toJson(loaded, findings);
        else if (!m_words.quiet)
            printForPeople(loaded, findings, start);
        const std::string& path = chosen.source().path();
        if (m_words.quiet && loaded.fault())
            complain((path.empty() ? "standard input" : path) + ": " + *loaded.fault());
        const bool isGood =
            std::all_of(findings.begin(), findings.end(), [this](const board::Finding& each) {
                return each.weight == board::Finding::Weight::NOTE && !m_words.isStrict;
            });
        return isGood ? DONE : FOUND;
    }

    int checkAll() const {
        ordered_json all = ordered_json::array();
        int worst = DONE;
        for (const std::string& image : m_words.images) {
            if (StopSignals::isAsked())
                break;
            ordered_json json;
            try {
                const int status = check(image, board::printable(image) + ": ", json);
                worst = worst == FAILED ? worst : std::max(worst, status);
            } catch (const board::Error& error) {
                json["error"] = error.what();
                static_cast<void>(flushOutput());
                complain(error.what());
                worst = FAILED;
            }
            if (!m_options.json)
                continue;
            ordered_json entry = {{"image", image}};
            entry.update(json);
            all.push_back(std::move(entry));
        }
        if (m_options.json)
            printJson(all);
        return worst;
    }

private:
    const Options& m_options;
    const CheckWords& m_words;
    std::vector<board::TagPlace> m_required;
};

int check(const Options& options, const CheckWords& words) {
    const Check check(options, words);
    if (std::count(words.images.begin(), words.images.end(), STANDARD_STREAM) > 1)
        throw WrongCall("standard input can be read only once (expected one -)");
    if (words.images.size() > 1)
        return check.checkAll();
    ordered_json json;
    const int status = check.check(words.images.empty() ? "" : words.images.front(), "", json);
    if (options.json)
        printJson(json);
    return status;
}

} // namespace

void addBdCheck(CLI::App& bd, Options& options) {
    const auto [command, words] = addCommand<CheckWords, check>(
        bd, options, "check",
        "List what is wrong with images; exits with 3 if one is corrupt or after a warning");
    command.add_option("-i,--image,IMAGE", words.images, READ_IMAGE)
        ->check(notEmpty())
        ->type_name("FILE");
    command
        .add_option("--require", words.required,
                    "Tags that must be there and not be empty, such as ProductID,MacAddress.1,5")
        ->check(notEmpty())
        ->type_name("TAG,...");
    command.add_flag("--strict", words.isStrict, "Exit with 3 after a note too");
    command.add_flag("-q,--quiet", words.quiet, "Print no findings for people");
    addExamples(command, {"bd check", "bd check --strict units/*.bin",
                          "bd check --require ProductID,MacAddress,5 unit.bin"});
}

} // namespace boardctl
