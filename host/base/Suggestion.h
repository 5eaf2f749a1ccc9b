#pragma once

#include <string>
#include <vector>

namespace board {

/// The end of a message about a word that is none of `known`: "; did you mean 'fan'?" with the
/// nearest of them, of several the first; empty where none is near. Near are at most two slips of
/// the keyboard, which may not be half of the word: a letter too many, missing or wrong, or two
/// that changed places. Case is no slip.
std::string didYouMean(const std::string& word, const std::vector<std::string>& known);

} // namespace board
