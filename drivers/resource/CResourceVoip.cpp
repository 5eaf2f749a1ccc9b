#include "CResourceVoip.h"

#include <limits>
#include <string>

#include "DID.h"
#include "DRIVER.h"
#include "IDriverRepository.h"
#include "InfoContainer.h"
#include "PREFERENCES.h"
#include "YES_NO.h"

namespace {

constexpr BD::TagId DSP_CHANNELS_TAG = 0x800E;
constexpr BD::TagId SIP_LEGS_TAG = 0x801A;
constexpr unsigned HIGHEST = std::numeric_limits<unsigned>::max();
constexpr unsigned UNKNOWN = HIGHEST;

XCode findBoardDescriptor(TYPPtr<IBoardDescr>& board) {
    IDriverRepository& repository = *DRIVER::INSTANCE();
    const TYLockHolder hold(repository.getLock());
    return repository.getInterface("board-descr-driver", board);
}

bool readTag(const TYPPtr<IBoardDescr>& board, BD::TagId id, unsigned& value) {
    String scratch;
    const auto hold = board.getLock();
    return board->getTagUInt(id, 0, value, scratch).isSuccess();
}

} // namespace

CResourceVoip::CResourceVoip(bool isBorderController)
    : TDriver(DID_Resource(), "resource-driver"), borderController(isBorderController) {}

CResourceVoip::~CResourceVoip() = default;

XCode CResourceVoip::setup(String& error) {
    TYPPtr<IBoardDescr> board;
    XCode status = findBoardDescriptor(board);
    if (!status.isSuccess()) {
        error = "FAILED TO GET BOARD-DESCRIPTOR-DRIVER INTERFACE";
        return status;
    }
    transcoding = true;
    calculateDspChannels(board);
    calculateSipLegs(board);
    return XCode();
}

// `board` is passed by value, so that each step holds its own reference. These signatures are part
// of the binary interface.
// NOLINTBEGIN(performance-unnecessary-value-param)
void CResourceVoip::calculateDspChannels(TYPPtr<IBoardDescr> board) {
    unsigned stored = 0;
    dspChannels = readTag(board, DSP_CHANNELS_TAG, stored) && stored != 0 ? stored : UNKNOWN;
    PREFERENCES::READPREF_UINT(PREFERENCES::VOIP_DSP_CHANNELS, dspChannels, dspChannels, 0,
                               HIGHEST);
}

void CResourceVoip::calculateSipLegs(TYPPtr<IBoardDescr> board) {
    if (!readTag(board, SIP_LEGS_TAG, sipLegs))
        sipLegs = borderController ? 0 : getDefaultSipLegs();
    PREFERENCES::READPREF_UINT(PREFERENCES::VOIP_SIP_LEGS, sipLegs, sipLegs, 0, HIGHEST);
}
// NOLINTEND(performance-unnecessary-value-param)

unsigned CResourceVoip::getDspChannelCount() const {
    return dspChannels;
}

unsigned CResourceVoip::getSipLegCount() const {
    return sipLegs;
}

InfoContainer& CResourceVoip::getInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                                      unsigned maxIndex, unsigned index,
                                      const String& prefix) const {
    if (level <= maxLevel && index <= maxIndex)
        container.add(level, index, String(prefix).concat("VoIP Resource"), String::EMPTY());
    if (level < maxLevel && index <= maxIndex) {
        container.add(level + 1, index, "DSP Channels", std::to_string(dspChannels).c_str());
        container.add(level + 1, index, "SIP Legs", std::to_string(sipLegs).c_str());
        container.add(level + 1, index, "Transcoding", YES_NO(transcoding));
        container.add(level + 1, index, "Border Controller", YES_NO(borderController));
    }
    return container;
}
