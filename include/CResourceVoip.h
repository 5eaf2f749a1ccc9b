#pragma once

#include "BOARD_API.h"
#include "CDriver.h"
#include "IBoardDescr.h"
#include "IInfo.h"
#include "IResourceVoip.h"
#include "TDriver.h"
#include "TYPPtr.h"

/// The VoIP capacity's driver: settles the figures once from the board descriptor and the
/// preferences, then only answers. Abstract: a board's subclass supplies the figure that its
/// descriptor may lack.
///
/// `setup` runs on one thread before the figures are asked for; they are read without a lock. The
/// order of the virtual operations is part of the binary face.
class BOARD_API CResourceVoip : public TDriver<CDriver, IResourceVoip, IInfo> {
public:
    /// In border-controller mode a descriptor without SIP legs means 0 of them.
    explicit CResourceVoip(bool borderController);
    ~CResourceVoip() override;

    /// Settles the figures: asks the process's repository for "board-descr-driver", reads its tags
    /// 0x800E (DSP channels; 0 or missing is unknown) and 0x801A (SIP legs; missing is
    /// `getDefaultSipLegs`, or 0 in border-controller mode), and lets the preferences override
    /// both. May be called again, and then settles anew. Without the descriptor's driver it returns
    /// the repository's status, puts "FAILED TO GET BOARD-DESCRIPTOR-DRIVER INTERFACE" into `error`
    /// and changes nothing.
    ///
    /// Holds the repository's lock for the look-up and the descriptor's lock for each read, one at
    /// a time.
    virtual XCode setup(String& error);

    unsigned getDspChannelCount() const override;
    unsigned getSipLegCount() const override;

    /// The header row "VoIP Resource", and one level deeper the two figures and the two modes.
    InfoContainer& getInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                           unsigned maxIndex, unsigned index, const String& prefix) const override;

    /// SIP legs of a board whose descriptor does not say. Called by `setup` once the DSP channels
    /// are settled.
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
