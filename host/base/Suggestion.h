#pragma once

#include <string>
#include <vector>

namespace board {

/// The end of a message about a word that is not among `known`: "; did you mean 'fan'?" with the
/// nearest known word, or the first of several equally near; empty if none is near. A word is near
/// if at most two typing errors, in less than half of the word, lead to it: an extra, missing or
/// wrong letter, or two swapped letters. Case is ignored.
std::string didYouMean(const std::string& word, const std::vector<std::string>& known);

} // namespace board
