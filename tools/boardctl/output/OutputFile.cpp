#include "output/OutputFile.h"

#include <iostream>

#include "base/FileReplacement.h"
#include "program/WordChecks.h"

namespace boardctl {

void addOutputOption(CLI::App& command, std::string& file) {
    command
        .add_option("-o,--output", file,
                    "Write to FILE, which is replaced as a whole, instead of standard output")
        ->check(notEmpty())
        ->option_text("FILE");
}

void printOrReplace(const std::string& file, const std::string& text) {
    if (file.empty())
        std::cout << text;
    else
        board::replaceFile(file, text);
}

} // namespace boardctl
