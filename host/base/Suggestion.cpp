#include "base/Suggestion.h"

#include <algorithm>

namespace board {

namespace {

constexpr std::size_t MOST_SLIPS = 2;

char lowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isSame(char a, char b) {
    return lowerCase(a) == lowerCase(b);
}

/// The number of typing errors that turn `a` into `b`.
std::size_t slips(const std::string& a, const std::string& b) {
    // Three rows of the table of edit distances between prefixes of the two words.
    std::vector<std::size_t> before, last(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        before = last;
        last = row;
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min(
                {last[j] + 1, row[j - 1] + 1, last[j - 1] + (isSame(a[i - 1], b[j - 1]) ? 0 : 1)});
            if (i > 1 && j > 1 && isSame(a[i - 1], b[j - 2]) && isSame(a[i - 2], b[j - 1]))
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
    }
    return row[b.size()];
}

} // namespace

std::string didYouMean(const std::string& word, const std::vector<std::string>& known) {
    const std::string* nearest = nullptr;
    std::size_t fewest = MOST_SLIPS + 1;
    for (const std::string& each : known) {
        const auto [shorter, longer] = std::minmax({word.size(), each.size()});
        // Lengths are compared first: the word may be as long as a command line, which would make
        // the table large.
        const std::size_t count = longer - shorter > MOST_SLIPS ? longer : slips(word, each);
        if (count < fewest && 2 * count < longer) {
            fewest = count;
            nearest = &each;
        }
    }
    return nearest ? "; did you mean '" + *nearest + "'?" : "";
}

} // namespace board
