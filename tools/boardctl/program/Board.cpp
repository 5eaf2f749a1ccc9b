#include "program/Board.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "base/Error.h"
#include "base/File.h"
#include "base/Suggestion.h"
#include "base/Text.h"

namespace boardctl {

namespace {

constexpr char NAMING_VARIABLE[] = "BOARDCTL_BOARD";
constexpr char USUAL_PROFILE[] = "/etc/boarddrivers/board.toml";

bool isSimulatedBoard = false;

/// False only if the file is missing. If it can't be examined, loading it reports the reason.
bool mayExist(const char* path) {
    return board::kindOf(path) != board::FileKind::MISSING || (errno != ENOENT && errno != ENOTDIR);
}

std::string profilePathFor(const Options& options,
                           const std::unique_ptr<board::ScratchBoard>& scratch) {
    if (scratch)
        return scratch->board().profile();
    if (!options.board.empty())
        return options.board;
    const char* const named = std::getenv(NAMING_VARIABLE);
    if (named && *named)
        return named;
    if (mayExist(USUAL_PROFILE))
        return USUAL_PROFILE;
    throw WrongCall(std::string("no board is named (expected --board FILE, the variable ") +
                    NAMING_VARIABLE + ", the file " + USUAL_PROFILE +
                    ", or --sim for a simulated board)");
}

template <class Entry>
std::vector<std::string> namesOf(const std::vector<Entry>& entries) {
    std::vector<std::string> names;
    for (const Entry& entry : entries)
        names.push_back(entry.name);
    return names;
}

std::vector<std::string> namesOf(const board::Profile& profile, board::DeviceKind kind) {
    switch (kind) {
    case board::DeviceKind::FAN:
        return namesOf(profile.fans);
    case board::DeviceKind::THERMAL:
        return namesOf(profile.thermals);
    case board::DeviceKind::POWER:
        return namesOf(profile.powers);
    case board::DeviceKind::LED:
        return namesOf(profile.leds);
    default: // the profile gives devices of other kinds no name
        return {};
    }
}

std::vector<std::string> chosen(const BoardProfile& board, board::DeviceKind kind,
                                const std::string& name) {
    std::vector<std::string> all = namesOf(board.profile(), kind);
    const std::string word = board::kindName(kind);
    if (all.empty())
        throw board::Error(board.profilePath() + ": the board has no " + word +
                           " (expected a table [[" + word + "]])");
    if (name.empty())
        return all;
    if (std::find(all.begin(), all.end(), name) == all.end())
        throw board::Error("there is no " + word + " '" + name + "' (there are: " +
                           board::join(all) + ")" + board::didYouMean(name, all));
    return {name};
}

} // namespace

bool worksOnSimulatedBoard() {
    return isSimulatedBoard;
}

BoardProfile::BoardProfile(const Options& options)
    : m_scratch(options.sim ? std::make_unique<board::ScratchBoard>() : nullptr),
      m_profilePath(profilePathFor(options, m_scratch)),
      m_profile(board::Profile::load(m_profilePath)) {
    isSimulatedBoard = m_profile.simulated;
}

const board::NamedPath& BoardProfile::button() const {
    if (!m_profile.button)
        throw board::Error(m_profilePath + ": the board has no button (expected a table [button])");
    return *m_profile.button;
}

Board::Board(const Options& options, board::DeviceKind kind, const std::string& name)
    : BoardProfile(options), m_names(chosen(*this, kind, name)), m_host(profile(), {kind, name}) {}

} // namespace boardctl
