#include <iostream>

#include "base/File.h"
#include "bd/BdCommands.h"
#include "bd/BdImage.h"
#include "descriptor/DescriptorCheck.h"
#include "output/Json.h"
#include "output/Messages.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

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

} // namespace

int bdCheck(const Options& options, const BdWords& words) {
    const bool isDevice = words.image.empty() || board::isDevice(words.image);
    const std::string bytes = readBytes(options, words.image);
    const board::CheckedImage image = board::checkImage(bytes, isDevice);
    if (options.json) {
        ordered_json findings = ordered_json::array();
        for (const board::Finding& finding : image.findings)
            findings.push_back({{"offset", finding.offset},
                                {"weight", nameOf(finding.weight)},
                                {"text", finding.text}});
        printJson({{"corrupt", image.isCorrupt},
                   {"size", bytes.size()},
                   {"used", image.usedBytes},
                   {"tags", image.tags},
                   {"findings", std::move(findings)}});
    } else {
        for (const board::Finding& finding : image.findings)
            std::cout << "at " << finding.offset << ": " << nameOf(finding.weight) << ": "
                      << finding.text << "\n";
        std::cout << image.tags << (image.tags == 1 ? " tag" : " tags") << " in " << image.usedBytes
                  << " of " << bytes.size() << " bytes" << (image.isCorrupt ? "; CORRUPT" : "")
                  << "\n";
    }
    if (!image.isCorrupt)
        return DONE;
    static_cast<void>(flushOutput());
    for (const board::Finding& finding : image.findings)
        if (finding.weight == board::Finding::Weight::CORRUPT)
            complain(finding.text);
    return FAILED;
}

} // namespace boardctl
