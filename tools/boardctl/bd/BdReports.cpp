#include <functional>
#include <iostream>
#include <string>

#include "base/Error.h"
#include "board/Report.h"
#include "descriptor/DescriptorImage.h"
#include "descriptor/TagsJson.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "output/Rows.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/WordChecks.h"

namespace boardctl {

namespace {

struct ReportWords {
    std::string image;
};

/// Calls `print` with the descriptor in `image`, by default with the board's own. A corrupt image
/// is shown up to its fault; the status then is FAILED.
int withDescriptor(const Options& options, const std::string& image,
                   const std::function<void(const CBoardDescr&)>& print) {
    std::string fault;
    if (image.empty()) {
        const Board board(options);
        if (!board.host().descriptor())
            throw board::Error(board.profilePath() + ": the board has no descriptor");
        fault = board::loadDescriptor(board.host());
        print(*board.host().descriptor());
    } else {
        CBoardDescr descriptor;
        String error;
        if (!descriptor.importBD(board::readImage(image), error).isSuccess())
            fault = error.c_str();
        print(descriptor);
    }
    if (fault.empty())
        return DONE;
    static_cast<void>(flushOutput()); // what was good comes before what was not
    complain(fault);
    return FAILED;
}

using ReportOperation = InfoContainer& (CBoardDescr::*)(InfoContainer&, unsigned, unsigned,
                                                        unsigned, unsigned, const String&) const;

int report(const Options& options, const ReportWords& words, ReportOperation operation) {
    return withDescriptor(options, words.image, [&](const CBoardDescr& descriptor) {
        InfoContainer rows;
        (descriptor.*operation)(rows, 2, 0, 0, 0, String::EMPTY());
        if (options.json)
            printJson(rowsToJson(rows));
        else
            printRows(rows);
    });
}

int show(const Options& options, const ReportWords& words) {
    return report(options, words, &CBoardDescr::getInfo);
}

int showRaw(const Options& options, const ReportWords& words) {
    return report(options, words, &CBoardDescr::getRawInfo);
}

int dump(const Options& options, const ReportWords& words) {
    return withDescriptor(options, words.image, [](const CBoardDescr& descriptor) {
        std::cout << board::tagsToJson(descriptor.getTags());
    });
}

void addReport(CLI::App& bd, Options& options, const char* name, const char* text,
               int (*print)(const Options&, const ReportWords&)) {
    const auto [command, words] = addCommand<ReportWords>(bd, options, name, text, print);
    command.add_option("IMAGE", words.image, "Image file; without it the board's own descriptor")
        ->check(notEmpty())
        ->type_name("FILE");
}

} // namespace

void addBdReports(CLI::App& bd, Options& options) {
    addReport(bd, options, "show", "The report for people: each tag by what it means", show);
    addReport(bd, options, "raw", "The report of all tags as bytes", showRaw);
    addReport(bd, options, "dump",
              "All tags as JSON, whatever --format says; `bd build` makes an image of it again",
              dump);
}

} // namespace boardctl
