#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include "base/Error.h"
#include "program/Options.h"
#include "program/WordChecks.h"

/// The commands below `bd`, and the options that several of them share. Each `addBd` function adds
/// one command, or a few that follow each other in the help.
namespace boardctl {

void addBdShow(CLI::App& bd, Options& options); ///< show, raw
void addBdDump(CLI::App& bd, Options& options);
void addBdBuild(CLI::App& bd, Options& options);
void addBdGet(CLI::App& bd, Options& options);
void addBdSet(CLI::App& bd, Options& options);
void addBdAdd(CLI::App& bd, Options& options);
void addBdPut(CLI::App& bd, Options& options);
void addBdInsert(CLI::App& bd, Options& options);
void addBdRemove(CLI::App& bd, Options& options);
void addBdMacRead(CLI::App& mac, Options& options); ///< list, get
void addBdMacEdit(CLI::App& mac, Options& options); ///< set, add
void addBdWrite(CLI::App& bd, Options& options);
void addBdBackups(CLI::App& bd, Options& options);
void addBdCheck(CLI::App& bd, Options& options);
void addBdCompare(CLI::App& bd, Options& options);

constexpr char TAG_HELP[] = "ID or ID.N: decimal, 0x hexadecimal or a name; N counts from 0";

/// This file name means standard input, or standard output if the file is to be written.
constexpr char STANDARD_STREAM[] = "-";

inline void addImage(CLI::App& command, const char* names, std::string& image, const char* text) {
    command.add_option(names, image, text)->check(notEmpty())->type_name("FILE");
}

constexpr char READ_IMAGE[] = "Image file, - for standard input; by default the board's descriptor";

/// Adds the option for the image to read, for commands that take other words.
inline void addImageOption(CLI::App& command, std::string& image) {
    addImage(command, "-i,--image", image, READ_IMAGE);
}

/// The same for commands that take no other words: the image may also be given without the option.
inline void addImageWord(CLI::App& command, std::string& image) {
    addImage(command, "-i,--image,IMAGE", image, READ_IMAGE);
}

/// Adds the option for the image to edit.
inline void addEditedImage(CLI::App& command, std::string& image) {
    addImage(command, "-i,--image", image, "Image file; by default the board's descriptor");
}

inline CLI::Option* addWord(CLI::App& command, const char* name, std::string& word,
                            const char* text) {
    return command.add_option(name, word, text)->check(notEmpty())->type_name("");
}

/// Returns the result of `parse`. If `parse` throws board::Error, throws WrongCall instead.
template <class Parser>
auto orWrongCall(Parser parse) -> decltype(parse()) {
    try {
        return parse();
    } catch (const board::Error& error) {
        throw WrongCall(error.what());
    }
}

} // namespace boardctl
