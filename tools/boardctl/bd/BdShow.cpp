#include "InfoContainer.h"
#include "bd/BdCommands.h"
#include "bd/BdSource.h"
#include "output/Json.h"
#include "output/Rows.h"
#include "program/Command.h"

namespace boardctl {

namespace {

struct ShowWords {
    std::string image;
};

using Report = InfoContainer& (CBoardDescr::*)(InfoContainer&, unsigned, unsigned, unsigned,
                                               unsigned, const String&) const;

int print(const Options& options, const ShowWords& words, Report report) {
    return printImage(options, words.image, [&](const board::TagImage& image) {
        CBoardDescr descriptor;
        image.loadInto(descriptor);
        InfoContainer rows;
        (descriptor.*report)(rows, 2, 0, 0, 0, String::EMPTY());
        if (options.json)
            printJson(rowsToJson(rows));
        else
            printRows(rows);
        return DONE;
    });
}

int show(const Options& options, const ShowWords& words) {
    return print(options, words, &CBoardDescr::getInfo);
}

int showRaw(const Options& options, const ShowWords& words) {
    return print(options, words, &CBoardDescr::getRawInfo);
}

} // namespace

void addBdShow(CLI::App& bd, Options& options) {
    {
        const auto [command, words] =
            addCommand<ShowWords, show>(bd, options, "show", "Print what each tag means");
        addImageWord(command, words.image);
    }
    const auto [command, words] =
        addCommand<ShowWords, showRaw>(bd, options, "raw", "Print all tags as bytes");
    addImageWord(command, words.image);
}

} // namespace boardctl
