#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/Error.h"
#include "descriptor/DescriptorStore.h"
#include "descriptor/TagWords.h"
#include "program/Options.h"

namespace boardctl {

/// The words after `bd`, each as typed. A command reads those that it has.
struct BdWords {
    std::string image; ///< empty: the board's own descriptor
    board::EditManner manner;
    bool yes = false;
    std::string tag;
    std::string type = "hex";
    std::vector<std::string> assignments;
    std::string position, mac, interface;
};

/// The result of `parse`. Its board::Error becomes a WrongCall.
template <class Parser>
auto orWrongCall(Parser parse) -> decltype(parse()) {
    try {
        return parse();
    } catch (const board::Error& error) {
        throw WrongCall(error.what());
    }
}

inline unsigned numberOrWrongCall(const std::string& word, unsigned maximum, const char* what) {
    return orWrongCall([&] { return board::parseNumber(word, maximum, what); });
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

/// Edits the image or the board's device by `step`: shows the change, asks before a device is
/// written, writes.
int edit(const Options& options, const BdWords& words,
         const std::function<void(board::DescriptorEdit&)>& step);

} // namespace boardctl
