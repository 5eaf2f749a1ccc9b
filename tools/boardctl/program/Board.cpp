#include "program/Board.h"

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

/// False only if there is no such file: one that can't be examined must not be passed over.
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

std::vector<std::string> Board::devices(board::DeviceKind kind, const std::string& name) const {
    std::vector<std::string> names, ofKind;
    for (const board::Device& device : m_host.devices()) {
        if (device.kind != kind)
            continue;
        ofKind.push_back(device.name);
        if (name.empty() || name == device.name)
            names.push_back(device.name);
    }
    const std::string word = board::kindName(kind);
    if (ofKind.empty())
        throw board::Error(profilePath() + ": the board has no " + word + " (expected a table [[" +
                           word + "]])");
    if (names.empty())
        throw board::Error("there is no " + word + " '" + name + "' (there are: " +
                           board::join(ofKind) + ")" + board::didYouMean(name, ofKind));
    return names;
}

} // namespace boardctl
