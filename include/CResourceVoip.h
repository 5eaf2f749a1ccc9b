#pragma once

#include "BOARD_API.h"
#include "CDriver.h"
#include "IBoardDescr.h"
#include "IInfo.h"
#include "IResourceVoip.h"
#include "TDriver.h"
#include "TYPPtr.h"

/// The VoIP capacity driver: determines the figures once from the board descriptor and the
/// preferences, then only returns them. Abstract: a board's subclass supplies the figure that its
/// descriptor may lack.
///
/// `setup` runs on one thread before clients ask for the figures, which are read without a lock. To
/// determine them again later, hold `getLock()` around `setup` and have the clients hold it too.
/// The order of the virtual operations is part of the binary interface.
class BOARD_API CResourceVoip : public TDriver<CDriver, IResourceVoip, IInfo> {
public:
    /// In border-controller mode, a descriptor without a figure for SIP legs means 0.
    explicit CResourceVoip(bool borderController);
    ~CResourceVoip() override;

    /// Determines the figures. Asks the process's repository for "board-descr-driver", reads its
    /// tags 0x800E (DSP channels; unknown if 0 or missing) and 0x801A (SIP legs; if missing,
    /// `getDefaultSipLegs`, or 0 in border-controller mode), and lets the preferences override
    /// both. May be called again, and then starts over. If there is no such driver, it returns the
    /// repository's status, puts "FAILED TO GET BOARD-DESCRIPTOR-DRIVER INTERFACE" into `error` and
    /// changes nothing.
    ///
    /// Holds the repository's lock for the lookup and the descriptor's lock for each read, never
    /// two at a time.
    virtual XCode setup(String& error);

    unsigned getDspChannelCount() const override;
    unsigned getSipLegCount() const override;

    /// A header row "VoIP Resource" and, one level deeper, the two figures and the two modes.
    InfoContainer& getInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                           unsigned maxIndex, unsigned index, const String& prefix) const override;

    /// The SIP legs of a board whose descriptor does not state them. `setup` calls it once the DSP
    /// channels are known.
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
