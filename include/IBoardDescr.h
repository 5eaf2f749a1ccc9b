#pragma once

#include "BD.h"
#include "BOARD_API.h"
#include "IUnknown.h"
#include "String.h"
#include "TString.h"

/// The board descriptor: the board's identity as a list of tags, kept in an EEPROM.
///
/// A tag is found by its identifier and its occurrence: `index` counts from 0 among the tags with
/// that identifier, in list order. Operations fail with code -1 and put a text into `error`; for a
/// missing tag that is "ERR TAG '<id>:=<name>' NOT FOUND". Edits stay in memory until `writeBD`.
///
/// The list in memory has no limits, but the image does: it holds the low 16 bits of an identifier,
/// and 0 and 65535 end it. A load accepts up to 65,531 bytes of data in a tag; a store keeps at
/// most 65,530, because odd data gets one more byte. No operation checks these limits; a store
/// checks only that the image is smaller than the device. A tag that exceeds one reads back as
/// something else, or not at all.
///
/// If memory runs out while an operation sets a tag's data, the tag is left empty and the operation
/// succeeds. If it runs out for anything else, std::bad_alloc is thrown and the list is unchanged,
/// with two exceptions: a load keeps only the tags before the one that it had no memory for, and
/// adding a MAC address may leave the new tag empty.
///
/// No operation takes a lock. Hold `getLock()` around calls on a driver that several threads share,
/// and around several calls that belong together. The order of the virtual operations is part of
/// the binary interface.
class BOARD_API IBoardDescr : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// How many tags carry `id`.
    virtual unsigned getNumberOfTag(BD::TagId id) = 0;
    /// Whether any tag carries `id`.
    virtual bool hasTag(BD::TagId id) = 0;

    ///@{
    /// Reads a number. `value` is set only on success. The data must have exactly the width of the
    /// type, otherwise the call fails with "ERR WRONG TAG SIZE"; `getTagUInt` accepts up to 4 bytes
    /// and reads widths of 0 and 3 as 0.
    virtual XCode getTagUInt(BD::TagId id, unsigned index, unsigned& value, String& error) = 0;
    virtual XCode getTagUInt8(BD::TagId id, unsigned index, unsigned char& value,
                              String& error) = 0;
    virtual XCode getTagUInt16(BD::TagId id, unsigned index, unsigned short& value,
                               String& error) = 0;
    ///@}
    /// The same for 32 bits, even if `long` has more.
    virtual XCode getTagUInt32(BD::TagId id, unsigned index, unsigned long& value,
                               String& error) = 0;
    /// Reads a text: the data bytes unchanged. `value` is set only on success.
    virtual XCode getTagString(BD::TagId id, unsigned index, String& value, String& error) = 0;

    ///@{
    /// Replaces the data of an existing tag, whatever its width was. `setTagUInt` and
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

    /// Appends a tag with a copy of `data`. Always succeeds; throws std::bad_alloc and appends
    /// nothing if there is no memory for a tag. A tag after a terminator (identifier 0) is stored
    /// but not read back.
    virtual XCode addTag(BD::TagId id, const TString<char>& data) = 0;
    /// The same, but at position `index` of the whole list; an `index` at or past the count
    /// appends.
    virtual XCode insertTag(unsigned index, BD::TagId id, const TString<char>& data) = 0;
    /// Reads the data. `data` is set only on success.
    virtual XCode getTag(BD::TagId id, unsigned index, TString<char>& data, String& error) = 0;
    /// Replaces the data of an existing tag.
    virtual XCode setTag(BD::TagId id, unsigned index, const TString<char>& data,
                         String& error) = 0;
    /// Removes the tag.
    virtual XCode removeTag(BD::TagId id, unsigned index, String& error) = 0;

    /// Replaces the list with what the device holds. If the device can't be read, the list does not
    /// change; if the image is corrupt, it holds the tags before the fault. If std::bad_alloc is
    /// thrown, the list is unchanged, or holds the tags before the one that there was no memory
    /// for.
    virtual XCode readBD(String& error) = 0;
    /// Stores the list on the device, without adding a terminator. If the list does not end with
    /// one, the next load reads the old bytes that follow on the device as more tags.
    virtual XCode writeBD(String& error) = 0;

    /// Reads MAC address `index` (tag 1) as "00:1A:2B:3C:4D:5E" with the interface number, 0 to
    /// 65535. Fails without a text if the tag is not 8 bytes long. The outputs are set only on
    /// success.
    virtual XCode getMacAddress(unsigned index, String& mac, unsigned& iface, String& error) = 0;
    /// Overwrites MAC address `index`. A group is a hexadecimal number, clamped to 32 bits with a
    /// sign; its low 8 bits count, so any group above 7FFFFFFF is stored as FF. Missing groups are
    /// 0. Several colons in a row count as one, and colons at either end are ignored, so an empty
    /// group does not mean 0. A seventh group fails with "ERR MAC TOO LONG" and changes nothing.
    /// The record keeps the upper 16 bits of `iface`: to read back N, pass N * 65536.
    virtual XCode setMacAddress(unsigned index, const String& mac, unsigned iface,
                                String& error) = 0;
    /// Adds a MAC tag before occurrence `index`, or before the last one if there are fewer; if
    /// there is none yet, at the end of the list. The address then goes into the last MAC tag: if
    /// there were others, the new tag stays empty and the last address is overwritten. A bad
    /// address fails and leaves the empty tag in the list.
    virtual XCode insertMacAddress(unsigned index, const String& mac, unsigned iface) = 0;
    /// `insertMacAddress` at the last MAC tag.
    virtual XCode addMacAddress(const String& mac, unsigned iface) = 0;

    ///@{
    /// The two 16-bit halves of tag 45 (ProductID); fail without a text if it is not 4 bytes long.
    virtual XCode getPlatformID(unsigned& id, String& error) = 0;
    virtual XCode getProductID(unsigned& id, String& error) = 0;
    ///@}
};
