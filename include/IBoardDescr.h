#pragma once

#include "BD.h"
#include "BOARD_API.h"
#include "IUnknown.h"
#include "String.h"
#include "TString.h"

/// The board descriptor: the board's identity as a list of tags, kept in an EEPROM.
///
/// A tag is found by its identifier and its occurrence: `index` counts from 0 among the tags with
/// that identifier, in list order. A failed operation returns code -1 and puts a text into `error`;
/// for a missing tag, the text is "ERR TAG '<id>:=<name>' NOT FOUND". Edits stay in memory until
/// `writeBD` stores them.
///
/// The list in memory has no limits, but its image on the device does. The image holds only the low
/// 16 bits of an identifier, and the identifiers 0 and 65535 end it. A tag can be loaded with up to
/// 65,531 bytes of data but stored with at most 65,530, because data of odd length is padded with
/// one byte. No operation checks these limits; `writeBD` checks only that the image is smaller than
/// the device. A tag that exceeds a limit reads back changed or not at all.
///
/// If memory runs out while an operation sets a tag's data, the tag is left empty and the operation
/// succeeds. If memory runs out for anything else, std::bad_alloc is thrown and the list is
/// unchanged, with two exceptions: `readBD` may leave only the tags before the tag for which memory
/// ran out, and adding a MAC address may leave a new, empty tag in the list.
///
/// No operation takes a lock. If several threads share a driver, each must hold the driver's lock
/// (`getLock()`) during a call, or during a whole sequence of calls that belong together. The order
/// of the virtual operations is part of the binary interface.
class BOARD_API IBoardDescr : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// The number of tags with `id`.
    virtual unsigned getNumberOfTag(BD::TagId id) = 0;
    /// Whether there is a tag with `id`.
    virtual bool hasTag(BD::TagId id) = 0;

    ///@{
    /// Read a number. `value` is set only on success. If the data does not have exactly the width
    /// of the number, the call fails with "ERR WRONG TAG SIZE". `getTagUInt`, however, accepts up
    /// to 4 bytes and reads data of 0 or 3 bytes as 0.
    virtual XCode getTagUInt(BD::TagId id, unsigned index, unsigned& value, String& error) = 0;
    virtual XCode getTagUInt8(BD::TagId id, unsigned index, unsigned char& value,
                              String& error) = 0;
    virtual XCode getTagUInt16(BD::TagId id, unsigned index, unsigned short& value,
                               String& error) = 0;
    ///@}
    /// Reads a 32-bit number in the same way, even if `long` is wider.
    virtual XCode getTagUInt32(BD::TagId id, unsigned index, unsigned long& value,
                               String& error) = 0;
    /// Reads the data bytes, unchanged, as a text. `value` is set only on success.
    virtual XCode getTagString(BD::TagId id, unsigned index, String& value, String& error) = 0;

    ///@{
    /// Replace the data of an existing tag, whatever its former length. `setTagUInt8` writes 1
    /// byte, `setTagUInt16` writes 2, `setTagUInt` and `setTagUInt32` write 4. A text is written
    /// without a terminating zero.
    virtual XCode setTagUInt(BD::TagId id, unsigned index, unsigned value, String& error) = 0;
    virtual XCode setTagUInt8(BD::TagId id, unsigned index, unsigned char value, String& error) = 0;
    virtual XCode setTagUInt16(BD::TagId id, unsigned index, unsigned short value,
                               String& error) = 0;
    virtual XCode setTagUInt32(BD::TagId id, unsigned index, unsigned long value,
                               String& error) = 0;
    virtual XCode setTagString(BD::TagId id, unsigned index, const String& value,
                               String& error) = 0;
    ///@}

    /// Appends a tag with a copy of `data`. Always returns success. If there is no memory for a
    /// tag, throws std::bad_alloc and appends nothing. A tag that follows a terminator (identifier
    /// 0) is stored but not read back.
    virtual XCode addTag(BD::TagId id, const TString<char>& data) = 0;
    /// Does the same, but inserts the tag at position `index` of the whole list, counted from 0. If
    /// the list has no more than `index` tags, appends the tag.
    virtual XCode insertTag(unsigned index, BD::TagId id, const TString<char>& data) = 0;
    /// Reads the data. `data` is set only on success.
    virtual XCode getTag(BD::TagId id, unsigned index, TString<char>& data, String& error) = 0;
    /// Replaces the data of an existing tag.
    virtual XCode setTag(BD::TagId id, unsigned index, const TString<char>& data,
                         String& error) = 0;
    /// Removes occurrence `index` of `id`.
    virtual XCode removeTag(BD::TagId id, unsigned index, String& error) = 0;

    /// Replaces the list with the tags on the device. If the device can't be read, fails and leaves
    /// the list unchanged. If the image is corrupt, fails too, and the list then holds the tags
    /// before the fault. If std::bad_alloc is thrown, the list is unchanged or holds the tags
    /// before the tag for which memory ran out.
    virtual XCode readBD(String& error) = 0;
    /// Stores the list on the device, without adding a terminator. If the list does not end with a
    /// terminator (a tag with identifier 0), the next load reads the old bytes after the image as
    /// more tags.
    virtual XCode writeBD(String& error) = 0;

    /// Reads MAC address `index` (occurrence `index` of tag 1). Sets `mac` to a text such as
    /// "00:1A:2B:3C:4D:5E" and `iface` to the interface number, 0 to 65535. Fails without a text if
    /// the tag is not 8 bytes long. The outputs are set only on success.
    virtual XCode getMacAddress(unsigned index, String& mac, unsigned& iface, String& error) = 0;
    /// Overwrites MAC address `index`. Each group of `mac` is read as a hexadecimal number, clamped
    /// to a signed number of 32 bits, and stored as its low 8 bits; any group above 7FFFFFFF is
    /// therefore stored as FF. Missing groups are stored as 0. Several colons in a row count as
    /// one, and colons at either end are ignored, so an empty group is skipped, not read as 0. A
    /// seventh group fails with "ERR MAC TOO LONG" and changes nothing. The tag stores only the
    /// upper 16 bits of `iface`: to read back N, pass N * 65536.
    virtual XCode setMacAddress(unsigned index, const String& mac, unsigned iface,
                                String& error) = 0;
    /// Inserts an empty MAC tag before MAC address `index`. If that address does not exist, inserts
    /// the tag before the last MAC address or, if there is none, at the end of the list. Then
    /// writes the address into the last MAC tag. If there were MAC tags before, the new tag
    /// therefore stays empty and the last address is overwritten. If the address has too many
    /// groups, fails and leaves the empty tag in the list.
    virtual XCode insertMacAddress(unsigned index, const String& mac, unsigned iface) = 0;
    /// Does the same as `insertMacAddress` with an `index` higher than that of any MAC address.
    virtual XCode addMacAddress(const String& mac, unsigned iface) = 0;

    ///@{
    /// `getPlatformID` reads the first 16-bit half of tag 45 (ProductID), `getProductID` the
    /// second. Both fail without a text if the tag is not 4 bytes long.
    virtual XCode getPlatformID(unsigned& id, String& error) = 0;
    virtual XCode getProductID(unsigned& id, String& error) = 0;
    ///@}
};
