#include "bd/edit/StationRecord.h"

#include <ctime>

#include "bd/edit/EditOutput.h"
#include "descriptor/TagWords.h"
#include "output/Json.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

std::string now() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    ::gmtime_r(&now, &utc);
    char time[] = "YYYY-MM-DDTHH:MM:SSZ";
    std::strftime(time, sizeof time, "%Y-%m-%dT%H:%M:%SZ", &utc);
    return time;
}

} // namespace

void StationRecord::open(const std::string& file) {
    if (!file.empty())
        m_file.emplace(file);
}

std::string StationRecord::line(const std::string& device, const board::StoreOutcome& outcome,
                                const std::string& error) {
    ordered_json line = {{"time", now()},
                         {"device", device},
                         {"result", nameOf(outcome.result)},
                         {"sha256_before", checksumOf(outcome.before)},
                         {"sha256_after", checksumOf(outcome.after)}};
    const board::TagImage image(outcome.image);
    if (const std::string serial = board::serialOf(image); !serial.empty())
        line["serial"] = serial;
    for (const board::ImageTag& each : image.tags())
        if (const auto address =
                each.tag.id == board::MAC_TAG ? board::macOf(each.tag) : std::nullopt)
            line["addresses"].push_back({{"mac", address->mac}, {"interface", address->interface}});
    if (!outcome.backup.empty())
        line["backup"] = outcome.backup;
    if (!error.empty())
        line["error"] = error;
    std::string text = jsonText(line, -1);
    text.pop_back(); // the newline
    return text;
}

void StationRecord::append(const std::string& device, const board::StoreOutcome& outcome,
                           const std::string& error) const {
    if (m_file && outcome.result != board::StoreResult::WRITTEN)
        m_file->append(line(device, outcome, error));
}

} // namespace boardctl
