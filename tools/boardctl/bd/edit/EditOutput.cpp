#include "bd/edit/EditOutput.h"

#include <iostream>

#include "base/Text.h"
#include "descriptor/DescriptorCheck.h"
#include "descriptor/TagWords.h"
#include "output/Json.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

std::string shown(const BD::Tag& tag) {
    std::string text = board::tagName(tag.id) + " (" + std::to_string(tag.id) + ")";
    if (tag.data.length() == 0)
        return text + (tag.id == board::TERMINATOR_TAG ? ": the terminator" : ": empty");
    text += ": " + board::hexDigits(tag);
    const std::string plain = board::textOf(tag);
    const bool isText = !plain.empty() && board::printable(plain) == plain;
    return isText ? text + "  \"" + plain + "\"" : text;
}

ordered_json changesToJson(const std::vector<board::TagChange>& changes) {
    ordered_json json = ordered_json::array();
    for (const board::TagChange& change : changes) {
        const BD::TagId id = change.before ? change.before->id : change.after->id;
        ordered_json entry = {{"position", change.position},
                              {"id", id},
                              {"name", board::tagName(id)},
                              {"old", nullptr},
                              {"new", nullptr}};
        if (change.before)
            entry["old"] = board::hexDigits(*change.before);
        if (change.after)
            entry["new"] = board::hexDigits(*change.after);
        json.push_back(std::move(entry));
    }
    return json;
}

} // namespace

void printChanges(std::ostream& out, const std::vector<board::TagChange>& changes) {
    for (const board::TagChange& change : changes) {
        if (change.before)
            out << "- " << change.position << " " << shown(*change.before) << "\n";
        if (change.after) {
            const auto wrongSize = board::wrongSizeOf(*change.after);
            out << "+ " << change.position << " " << shown(*change.after)
                << (wrongSize ? "  <- " + *wrongSize : "") << "\n";
        }
    }
}

void printOutcome(const std::string& path, const board::EditOutcome& outcome, bool isDryRun) {
    std::cout << path << ": ";
    if (outcome.changes.empty())
        std::cout << "already up to date; nothing was written\n";
    else if (isDryRun)
        std::cout << "dry run; nothing was written\n";
    else
        std::cout << "written" << backupNote(outcome) << "\n";
}

void printOutcomeAsJson(const std::string& path, const board::EditOutcome& outcome) {
    ordered_json json = {{"image", path},
                         {"device", outcome.isDevice},
                         {"changes", changesToJson(outcome.changes)},
                         {"written", outcome.isWritten},
                         {"backup", nullptr}};
    if (!outcome.backup.empty())
        json["backup"] = outcome.backup;
    printJson(json);
}

std::string backupNote(const board::EditOutcome& outcome) {
    return outcome.backup.empty() ? "" : "; the old image is in " + outcome.backup;
}

} // namespace boardctl
