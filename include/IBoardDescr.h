#pragma once

#include "BD.h"
#include "BOARD_API.h"
#include "IUnknown.h"
#include "String.h"
#include "TString.h"

/// The board descriptor: the board's identity as a list of tags, kept in an EEPROM.
///
/// A tag is named by its identifier and its occurrence: `index` counts from 0 among the tags with
/// that identifier, in list order. Operations fail with code -1 and put a text into `error`; a tag
/// that is not there gives "ERR TAG '<id>:=<name>' NOT FOUND". Edits stay in memory until
/// `writeBD`.
///
/// Where memory runs out for data, a tag is left empty and the operation succeeds; where it runs
/// out for anything else, std::bad_alloc is thrown and nothing is lost: the list is as it was, but
/// for a load, and for a MAC address that was to be added, whose empty tag may stand there.
///
/// No operation takes a lock. Callers on several threads take the one from `getLock()` around their
/// calls. The order of the virtual operations is part of the binary face.
class BOARD_API IBoardDescr : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// How many tags carry `id`.
    virtual unsigned getNumberOfTag(BD::TagId id) = 0;
    /// Whether any tag carries `id`.
    virtual bool hasTag(BD::TagId id) = 0;

    ///@{
    /// Reads a number. `value` is written on success only. The data must have exactly the width of
    /// the type, else "ERR WRONG TAG SIZE"; `getTagUInt` takes up to 4 bytes and reads widths of 0
    /// and 3 as 0.
    virtual XCode getTagUInt(BD::TagId id, unsigned index, unsigned& value, String& error) = 0;
    virtual XCode getTagUInt8(BD::TagId id, unsigned index, unsigned char& value,
                              String& error) = 0;
    virtual XCode getTagUInt16(BD::TagId id, unsigned index, unsigned short& value,
                               String& error) = 0;
    ///@}
    /// The same for 32 bits, also where `long` has more.
    virtual XCode getTagUInt32(BD::TagId id, unsigned index, unsigned long& value,
                               String& error) = 0;
    /// Reads a text: the data bytes as they are. `value` is written on success only.
    virtual XCode getTagString(BD::TagId id, unsigned index, String& value, String& error) = 0;

    ///@{
    /// Replaces the data of a tag that exists; its former width does not count. `setTagUInt` and
    /// `setTagUInt32` write 4 bytes, the others 1 and 2; a text is written without a terminating
    /// zero.
    virtual XCode setTagUInt(BD::TagId id, unsigned index, unsigned value, String& error) = 0;
    virtual XCode setTagUInt8(BD::TagId id, unsigned index, unsigned char value, String& error) = 0;
    virtual XCode setTagUInt16(BD::TagId id, unsigned index, unsigned short value,
                               String& error) = 0;
    virtual XCode setTagUInt32(BD::TagId id, unsigned index, unsigned long value,
                               String& error) = 0;
    virtual XCode setTagString(BD::TagId id, unsigned index, const String& value,
                               String& error) = 0;
    ///@}

    /// Appends a tag with a copy of `data`. Always succeeds; throws std::bad_alloc, and appends
    /// nothing, where there is no memory for a tag. Behind a terminator (identifier 0) it would be
    /// stored, but not read back.
    virtual XCode addTag(BD::TagId id, const TString<char>& data) = 0;
    /// The same at position `index` of the whole list; at or past the count it appends.
    virtual XCode insertTag(unsigned index, BD::TagId id, const TString<char>& data) = 0;
    /// Reads the data. `data` is written on success only.
    virtual XCode getTag(BD::TagId id, unsigned index, TString<char>& data, String& error) = 0;
    /// Replaces the data of a tag that exists.
    virtual XCode setTag(BD::TagId id, unsigned index, const TString<char>& data,
                         String& error) = 0;
    /// Removes the tag.
    virtual XCode removeTag(BD::TagId id, unsigned index, String& error) = 0;

    /// Replaces the list by what the device holds. Where the device can't be read the list stays;
    /// where the image is corrupt the tags before the fault are held. Where std::bad_alloc is
    /// thrown the list is as it was, or holds the tags that came before.
    virtual XCode readBD(String& error) = 0;
    /// Stores the list on the device, as it stands: a list without a terminator at its end leaves
    /// what stood behind it on the device to be read as tags.
    virtual XCode writeBD(String& error) = 0;

    /// Reads MAC address `index` (tag 1) as "00:1A:2B:3C:4D:5E" with the interface number, 0 to
    /// 65535. A tag that is not 8 bytes long fails without a text. Outputs are written on success
    /// only.
    virtual XCode getMacAddress(unsigned index, String& mac, unsigned& iface, String& error) = 0;
    /// Overwrites MAC address `index`. Groups are hexadecimal and parted by colons; of each the low
    /// 8 bits count, missing ones are 0, a seventh fails with "ERR MAC TOO LONG" and changes
    /// nothing. The record keeps the upper 16 bits of `iface`: to read back N, hand in N * 65536.
    virtual XCode setMacAddress(unsigned index, const String& mac, unsigned iface,
                                String& error) = 0;
    /// Adds a MAC tag in front of occurrence `index`, the last one at most; with none yet, at the
    /// list's end. The address then goes to the last MAC tag: with one or more before, the new tag
    /// stays empty and the last address is overwritten. A bad address fails and leaves the empty
    /// tag.
    virtual XCode insertMacAddress(unsigned index, const String& mac, unsigned iface) = 0;
    /// `insertMacAddress` at the last MAC tag.
    virtual XCode addMacAddress(const String& mac, unsigned iface) = 0;

    ///@{
    /// The two 16-bit halves of tag 45 (ProductID), which must be 4 bytes long; fail without a text
    /// where it is not.
    virtual XCode getPlatformID(unsigned& id, String& error) = 0;
    virtual XCode getProductID(unsigned& id, String& error) = 0;
    ///@}
};
