#include "output/Prompt.h"

#include <iostream>

#include <unistd.h>

#include "base/Text.h"
#include "program/Options.h"

namespace boardctl {

void expectYes(const std::string& question, const std::string& refused,
               const std::string& unasked) {
    if (::isatty(STDIN_FILENO) == 0)
        throw Declined(unasked);
    std::cerr << board::printable(question) << " [y/N] " << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    if (answer != "y" && answer != "Y" && answer != "yes")
        throw Declined(refused);
}

} // namespace boardctl
