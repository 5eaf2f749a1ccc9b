#pragma once

#include "BOARD_API.h"
#include "CDriver.h"
#include "IBoardDescr.h"
#include "IInfo.h"
#include "IResourceVoip.h"
#include "TDriver.h"
#include "TYPPtr.h"

/// The VoIP capacity driver. `setup` determines the figures from the board descriptor and the
/// preferences; the other operations only return them. The class is abstract: a descriptor may lack
/// the number of SIP legs, so a derived class supplies the board's default.
///
/// Clients read the figures without a lock, so call `setup` before any client can ask for them. To
/// call `setup` again later, hold the driver's lock (`getLock()`) during the call; the clients must
/// then hold it during their calls too. The order of the virtual operations is part of the binary
/// interface.
class BOARD_API CResourceVoip : public TDriver<CDriver, IResourceVoip, IInfo> {
public:
    /// If `borderController` is true, the number of SIP legs is 0 unless the descriptor or a
    /// preference states it.
    explicit CResourceVoip(bool borderController);
    ~CResourceVoip() override;

    /// Determines the figures anew at each call. Gets the driver "board-descr-driver" from the
    /// process's repository and reads two tags. Tag 0x800E holds the number of DSP channels; 0 or
    /// an unreadable tag means that the number is unknown. Tag 0x801A holds the number of SIP legs;
    /// if the tag is unreadable, the number is the result of `getDefaultSipLegs`, or 0 in
    /// border-controller mode. Preferences override both figures. If the driver is not available,
    /// returns the repository's status, puts "FAILED TO GET BOARD-DESCRIPTOR-DRIVER INTERFACE" into
    /// `error` and changes nothing.
    ///
    /// Holds the repository's lock for the lookup and the descriptor's lock for each read, but
    /// never both locks at once.
    virtual XCode setup(String& error);

    unsigned getDspChannelCount() const override;
    unsigned getSipLegCount() const override;

    /// Adds a header row "VoIP Resource" and, one level deeper, four rows: the two figures, whether
    /// the board transcodes, and whether it is in border-controller mode.
    InfoContainer& getInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                           unsigned maxIndex, unsigned index, const String& prefix) const override;

    /// Returns the SIP legs of a board whose descriptor does not state them. `setup` calls this
    /// function after it has determined the DSP channels.
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
