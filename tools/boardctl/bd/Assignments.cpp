#include "bd/Assignments.h"

#include <set>

#include "bd/BdCommands.h"
#include "program/WordChecks.h"

namespace boardctl {

CLI::Option* addAssignments(CLI::App& command, std::vector<std::string>& assignments,
                            const char* about) {
    return command
        .add_option("ASSIGNMENT", assignments,
                    std::string("TYPE is u8, u16, u32, uint (4 bytes), text, hex or mac "
                                "(ADDRESS/INTERFACE). ") +
                        about)
        ->type_name("ID=TYPE:VALUE")
        ->check(notEmpty());
}

std::vector<board::Assignment> parseForExistingTags(const std::vector<std::string>& words) {
    std::vector<board::Assignment> assignments;
    std::set<std::pair<BD::TagId, unsigned>> places;
    for (const std::string& word : words) {
        assignments.push_back(orWrongCall([&] { return board::parseAssignment(word); }));
        const board::TagPlace& place = assignments.back().place;
        if (!places.insert({place.id, place.index}).second)
            throw WrongCall("tag " + std::to_string(place.id) + "." + std::to_string(place.index) +
                            " is assigned twice");
    }
    return assignments;
}

std::vector<board::Assignment> parseToPut(const std::vector<std::string>& words) {
    std::vector<board::Assignment> assignments;
    std::set<std::string> places;
    for (const std::string& word : words) {
        assignments.push_back(orWrongCall([&] { return board::parseAssignment(word); }));
        const std::string place = board::placeWords(assignments.back());
        if (!places.insert(place).second)
            throw WrongCall(place + " is assigned twice");
    }
    return assignments;
}

std::vector<board::Assignment> parseForNewTags(const std::vector<std::string>& words) {
    std::vector<board::Assignment> assignments;
    for (const std::string& word : words) {
        assignments.push_back(orWrongCall([&] { return board::parseAssignment(word); }));
        if (assignments.back().hasIndex)
            throw WrongCall("a new tag has a position in the list, not an occurrence (expected "
                            "ID=TYPE:VALUE)");
    }
    return assignments;
}

} // namespace boardctl
