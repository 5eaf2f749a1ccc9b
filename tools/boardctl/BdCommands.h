#pragma once

#include <string>
#include <vector>

#include "CommandLine.h"
#include "base/Error.h"
#include "descriptor/DescriptorStore.h"
#include "descriptor/TagWords.h"

/// What the words behind `bd` said, each as it was typed; a command reads those that it takes.
struct BdWords {
    std::string image; ///< empty: the board's own descriptor
    board::EditManner manner;
    bool yes = false;
    std::string tag;
    std::string type = "hex";
    std::vector<std::string> assignments;
    std::string position, mac, interface;
};

/// The result of a parser of words; where it throws Error, the call was wrong.
template <class Parser>
auto meant(Parser parse) -> decltype(parse()) {
    try {
        return parse();
    } catch (const board::Error& error) {
        throw WrongCall(error.what());
    }
}

inline unsigned meantNumber(const std::string& word, unsigned maximum, const char* what) {
    return meant([&] { return board::parseNumber(word, maximum, what); });
}

// The commands; each returns the exit status.

int bdGet(const Options& options, const BdWords& words);
int bdCheck(const Options& options, const BdWords& words);
int bdMacList(const Options& options, const BdWords& words);
int bdMacGet(const Options& options, const BdWords& words);

int bdSet(const Options& options, const BdWords& words);
int bdAdd(const Options& options, const BdWords& words);
int bdInsert(const Options& options, const BdWords& words);
int bdRemove(const Options& options, const BdWords& words);
int bdMacSet(const Options& options, const BdWords& words);
int bdMacAdd(const Options& options, const BdWords& words);
