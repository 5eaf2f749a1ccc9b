#include "bd/edit/EditOutput.h"

#include <iostream>

#include "base/Text.h"
#include "descriptor/TagWords.h"
#include "descriptor/store/Sha256.h"
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
        if (change.wrongSize)
            entry["wrong_size"] = *change.wrongSize;
        json.push_back(std::move(entry));
    }
    return json;
}

} // namespace

void printChanges(std::ostream& out, const std::vector<board::TagChange>& changes) {
    for (const board::TagChange& change : changes) {
        if (change.before)
            out << "- " << change.position << " " << shown(*change.before) << "\n";
        if (change.after)
            out << "+ " << change.position << " " << shown(*change.after)
                << (change.wrongSize ? "  <- " + *change.wrongSize : "") << "\n";
    }
}

void printOutcome(const std::string& path, const board::StoreOutcome& outcome) {
    std::cout << board::printable(path) << ": ";
    if (outcome.result == board::StoreResult::WRITTEN)
        std::cout << "written" << board::printable(backupNote(outcome)) << "\n";
    else
        std::cout << (outcome.wouldWrite ? "dry run" : "already up to date")
                  << "; nothing was written\n";
}

const char* nameOf(board::StoreResult result) {
    switch (result) {
    case board::StoreResult::UNCHANGED:
        return "unchanged";
    case board::StoreResult::WRITTEN:
        return "written";
    case board::StoreResult::RESTORED:
        return "restored";
    case board::StoreResult::DECLINED:
        return "declined";
    case board::StoreResult::FAILED:
        break;
    }
    return "failed";
}

ordered_json checksumOf(const std::optional<std::string>& bytes) {
    return bytes ? ordered_json(board::sha256(*bytes)) : ordered_json(nullptr);
}

void printOutcomeAsJson(const std::string& path, const board::StoreOutcome& outcome, bool isEdit,
                        const std::string& error) {
    ordered_json json = {
        {"image", path.empty() ? ordered_json(nullptr) : ordered_json(path)},
        {"device", path.empty() ? ordered_json(nullptr) : ordered_json(outcome.isDevice)},
        {"result", nameOf(outcome.result)}};
    if (isEdit) {
        json["changes"] = changesToJson(outcome.changes);
    } else {
        json["size"] = outcome.image.size();
        json["sha256_before"] = checksumOf(outcome.before);
        json["sha256_after"] = checksumOf(outcome.after);
    }
    json["written"] = outcome.result == board::StoreResult::WRITTEN;
    json["backup"] = outcome.backup.empty() ? ordered_json(nullptr) : ordered_json(outcome.backup);
    if (outcome.wouldWrite)
        json["dry_run"] = true;
    if (outcome.isTorn)
        json["interrupted"] = true;
    if (!error.empty())
        json["error"] = error;
    printJson(json);
}

std::string backupNote(const board::StoreOutcome& outcome) {
    return outcome.backup.empty() ? "" : "; the old image is in " + outcome.backup;
}

std::string sizeOf(const std::string& image) {
    const std::size_t tags = board::TagImage(image).tags().size();
    return std::to_string(tags) + (tags == 1 ? " tag" : " tags") + " in " +
           std::to_string(image.size()) + " bytes";
}

} // namespace boardctl
