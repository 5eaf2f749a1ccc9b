#pragma once

#include <string>
#include <vector>

namespace board {

/// The end of a message about a word that is not in `known`, such as "; did you mean 'fan'?". Names
/// the nearest known word, or the first of several equally near; empty if none is near. A word is
/// near if it differs by at most two typing errors, and by fewer than half the number of letters of
/// the longer word. A typing error is an extra, missing or wrong letter, or two swapped letters.
/// Case is ignored.
std::string didYouMean(const std::string& word, const std::vector<std::string>& known);

} // namespace board
