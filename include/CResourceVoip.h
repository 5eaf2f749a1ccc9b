#pragma once

#include "BOARD_API.h"
#include "CDriver.h"
#include "IBoardDescr.h"
#include "IInfo.h"
#include "IResourceVoip.h"
#include "TDriver.h"
#include "TYPPtr.h"

/// The VoIP capacity driver. `setup` determines the figures from the board descriptor and the
/// preferences; the other operations only return them. Abstract: a board's subclass supplies the
/// default number of SIP legs, because a descriptor may lack it.
///
/// Clients read the figures without a lock, so call `setup` before any client can ask for them. To
/// call it again later, hold `getLock()` around the call and have the clients hold it too. The
/// order of the virtual operations is part of the binary interface.
class BOARD_API CResourceVoip : public TDriver<CDriver, IResourceVoip, IInfo> {
public:
    /// In border-controller mode, a board whose descriptor does not state its SIP legs has 0.
    explicit CResourceVoip(bool borderController);
    ~CResourceVoip() override;

    /// Determines the figures anew at each call. Gets "board-descr-driver" from the process's
    /// repository and reads two of its tags: 0x800E, the DSP channels (unknown if 0 or unreadable),
    /// and 0x801A, the SIP legs (if unreadable, `getDefaultSipLegs`, or 0 in border-controller
    /// mode). Preferences override both. If there is no such driver, returns the repository's
    /// status, puts "FAILED TO GET BOARD-DESCRIPTOR-DRIVER INTERFACE" into `error` and changes
    /// nothing.
    ///
    /// Holds the repository's lock for the lookup and the descriptor's lock for each read, never
    /// both at once.
    virtual XCode setup(String& error);

    unsigned getDspChannelCount() const override;
    unsigned getSipLegCount() const override;

    /// A header row "VoIP Resource" and, one level deeper, the two figures, then whether the board
    /// transcodes and whether it is in border-controller mode.
    InfoContainer& getInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                           unsigned maxIndex, unsigned index, const String& prefix) const override;

    /// The SIP legs of a board whose descriptor does not state them. `setup` calls this after it
    /// has determined the DSP channels.
    virtual unsigned getDefaultSipLegs() = 0;

    ///@{
    /// The two steps of `setup`, in this order. `board` must not be empty.
    void calculateDspChannels(TYPPtr<IBoardDescr> board);
    void calculateSipLegs(TYPPtr<IBoardDescr> board);
    ///@}

private:
    bool borderController;
    bool transcoding = false;
    unsigned dspChannels = 0;
    unsigned sipLegs = 0;
};
