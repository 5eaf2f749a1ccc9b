#include "program/Board.h"

#include "base/Error.h"
#include "base/Suggestion.h"
#include "base/Text.h"

namespace boardctl {

namespace {

std::string profilePathFor(const Options& options,
                           const std::unique_ptr<board::ScratchBoard>& scratch) {
    return scratch ? scratch->board().profile() : options.board;
}

} // namespace

BoardProfile::BoardProfile(const Options& options)
    : m_scratch(options.board.empty() ? std::make_unique<board::ScratchBoard>() : nullptr),
      m_profilePath(profilePathFor(options, m_scratch)),
      m_profile(board::Profile::load(m_profilePath)) {}

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
