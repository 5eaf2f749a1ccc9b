#include "program/WordChecks.h"

#include <charconv>

#include "String.h"
#include "base/Suggestion.h"
#include "base/Text.h"

namespace boardctl {

CLI::Validator notEmpty() {
    return CLI::Validator(
        [](const std::string& word) {
            return word.empty() ? std::string("is empty") : std::string();
        },
        "");
}

CLI::Validator oneOf(const std::vector<std::string>& words) {
    return CLI::Validator(
        [words](std::string& word) {
            if (CLI::IsMember(words)(word).empty())
                return std::string();
            return "'" + word + "' (expected " + board::joinChoices(words) + ")" +
                   board::didYouMean(word, words);
        },
        "");
}

CLI::Validator seconds(double least, double most) {
    return CLI::Validator(
        [=](const std::string& word) {
            double value = -1;
            // NaN compares false with everything, so this rejects it too.
            const bool fits =
                CLI::detail::lexical_cast(word, value) && value >= least && value <= most;
            return fits ? std::string()
                        : String::format("'%s' (expected seconds, %g to %.0f)", word.c_str(), least,
                                         most)
                              .c_str();
        },
        "");
}

CLI::Validator decimal(long long least, long long most) {
    return CLI::Validator(
        [=](std::string& word) {
            long long value = 0;
            const char* const end = word.data() + word.size();
            const auto [rest, error] = std::from_chars(word.data(), end, value);
            if (error != std::errc() || rest != end || value < least || value > most)
                return "'" + word + "' (expected " + std::to_string(least) + " to " +
                       std::to_string(most) + ")";
            word = std::to_string(value); // the parser would read a leading zero as octal
            return std::string();
        },
        "");
}

CLI::Validator hexByte() {
    return CLI::Validator(
        [](const std::string& word) {
            const bool isByte =
                word.size() == 2 &&
                word.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
            return isByte ? std::string()
                          : "'" + word + "' (expected two hexadecimal digits, such as FF)";
        },
        "");
}

} // namespace boardctl
