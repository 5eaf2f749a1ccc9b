#pragma once

#include "BD_Tag.h"
#include "BOARD_API.h"
#include "CDriver.h"
#include "IBoardDescr.h"
#include "IInfo.h"
#include "TDriver.h"
#include "VELM_List.h"

/// The board descriptor's driver. It keeps the tag list in memory, loads it from an image in a
/// device file, stores it there, and creates two reports.
///
/// An image is a sequence of chunks that starts at byte 0. A chunk consists of an identifier (2
/// bytes), the length of the whole chunk (2 bytes, at least 4) and data. Numbers are big-endian.
/// Identifier 0x0000 or 0xFFFF ends the image. The writer pads data of odd length with a zero byte
/// and includes that byte in the length, so the tag reads back one byte longer.
///
/// The order of the virtual operations is part of the binary interface.
class BOARD_API CBoardDescr : public TDriver<CDriver, IBoardDescr, IInfo> {
public:
    /// The tags, in the order of the image.
    using TagList = VELM_List<BD::Tag>;

    ///@{
    /// Error texts. The first one is a printf format for the identifier and the name of a tag.
    static constexpr char ERR_TAG_NOT_FOUND[] = "ERR TAG '%d:=%s' NOT FOUND";
    static constexpr char ERR_WRONG_TAG_SIZE[] = "ERR WRONG TAG SIZE";
    static constexpr char ERR_MAC_TOO_LONG[] = "ERR MAC TOO LONG";
    ///@}

    /// Creates a driver with an empty list and no device: `readBD` and `writeBD` fail without a
    /// text.
    CBoardDescr();

    /// Creates a driver with an empty list for the device file `devicePath`. The path is not copied
    /// and must outlive the object. The file is read `readChunk` bytes at a time. An image is
    /// written only if it is smaller than `deviceSize` bytes.
    CBoardDescr(const char* devicePath, unsigned readChunk, unsigned deviceSize);
    ~CBoardDescr() override;

    unsigned getNumberOfTag(BD::TagId id) override;
    bool hasTag(BD::TagId id) override;
    XCode getTagUInt(BD::TagId id, unsigned index, unsigned& value, String& error) override;
    XCode getTagUInt8(BD::TagId id, unsigned index, unsigned char& value, String& error) override;
    XCode getTagUInt16(BD::TagId id, unsigned index, unsigned short& value, String& error) override;
    XCode getTagUInt32(BD::TagId id, unsigned index, unsigned long& value, String& error) override;
    XCode getTagString(BD::TagId id, unsigned index, String& value, String& error) override;
    XCode setTagUInt(BD::TagId id, unsigned index, unsigned value, String& error) override;
    XCode setTagUInt8(BD::TagId id, unsigned index, unsigned char value, String& error) override;
    XCode setTagUInt16(BD::TagId id, unsigned index, unsigned short value, String& error) override;
    XCode setTagUInt32(BD::TagId id, unsigned index, unsigned long value, String& error) override;
    XCode setTagString(BD::TagId id, unsigned index, const String& value, String& error) override;
    XCode addTag(BD::TagId id, const TString<char>& data) override;
    XCode insertTag(unsigned index, BD::TagId id, const TString<char>& data) override;
    XCode getTag(BD::TagId id, unsigned index, TString<char>& data, String& error) override;
    XCode setTag(BD::TagId id, unsigned index, const TString<char>& data, String& error) override;
    XCode removeTag(BD::TagId id, unsigned index, String& error) override;
    XCode readBD(String& error) override;
    XCode writeBD(String& error) override;
    XCode getMacAddress(unsigned index, String& mac, unsigned& iface, String& error) override;
    XCode setMacAddress(unsigned index, const String& mac, unsigned iface, String& error) override;
    XCode insertMacAddress(unsigned index, const String& mac, unsigned iface) override;
    XCode addMacAddress(const String& mac, unsigned iface) override;
    XCode getPlatformID(unsigned& id, String& error) override;
    XCode getProductID(unsigned& id, String& error) override;

    /// Adds the report for people: a header row and, two levels deeper, the rows of the tags. The
    /// meaning of a tag determines its format. A malformed tag does not end the report.
    InfoContainer& getInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                           unsigned maxIndex, unsigned index, const String& prefix) const override;

    /// Adds the raw report: a header row and, two levels deeper, a numbered row with a byte dump
    /// for each tag.
    virtual InfoContainer& getRawInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                                      unsigned maxIndex, unsigned index,
                                      const String& prefix) const;

    /// Appends the whole device file to `image`. Fails without a text if there is no device. If the
    /// file can't be opened or read, fails with "FAILED TO OPEN DEVICE '%s'" or "FAILED TO READ
    /// DEVICE '%s'". If a read fails or std::bad_alloc is thrown, `image` keeps the bytes that were
    /// read before. If a board keeps its descriptor elsewhere, its class overrides `readRawBD` and
    /// `writeRawBD`.
    virtual XCode readRawBD(TString<char>& image, String& error);

    /// Writes `image` to the start of the device file in one call; the device's bytes after the
    /// image do not change. Fails without a text if there is no device. If the image is not smaller
    /// than `deviceSize`, fails without opening the device. A short write is not detected: if the
    /// EEPROM is smaller than the image, the EEPROM stores the part that fits, and the call
    /// succeeds.
    virtual XCode writeRawBD(const TString<char>& image, String& error);

    /// Returns occurrence `index` of `id` in the list. If there is none, returns null and puts a
    /// text into `error`. The pointer is valid until the tag is removed or another list is loaded.
    BD::Tag* getTag(BD::TagId id, unsigned index, String& error);

    /// The position of occurrence `index` of `id`; the end of the list if there is none.
    TagList::Iterator getTagIterator(BD::TagId id, unsigned index);
    /// The position of the first tag with `id` at or after `from`; the end of the list if there is
    /// none.
    TagList::Iterator getTagIterator(TagList::Iterator& from, BD::TagId id);

    /// All tags in order, read-only.
    const TagList& getTags() const { return m_tags; }

    /// Reads the data of `tag`, whatever its identifier, as a six-byte MAC address and a two-byte
    /// interface number. If the tag is not 8 bytes long, fails and leaves the outputs unchanged.
    XCode getMacAddr(const BD::Tag& tag, String& mac, unsigned& iface) const;

    /// Replaces the list with the tags of `image`. A terminator ends the import and becomes the
    /// last tag, with identifier 0 and no data. If the image is corrupt, fails with "CORRUPTED
    /// BOARD DESCRIPTOR: ..." and the position of the fault; the list then holds the tags before
    /// the fault. If std::bad_alloc is thrown, the list is unchanged or holds the tags before the
    /// tag for which memory ran out.
    XCode importBD(const TString<char>& image, String& error);

    /// Appends the list's image to `image`, without adding a terminator. Always returns success; if
    /// std::bad_alloc is thrown, `image` is unchanged. Identifiers and chunk lengths are written
    /// with their low 16 bits only, so a tag that exceeds the limits of the image (see IBoardDescr)
    /// reads back changed or not at all.
    XCode exportBD(TString<char>& image, String& error);

private:
    const char* m_devicePath = nullptr;
    unsigned m_readChunk = 0;
    unsigned m_deviceSize = 0;
    TagList m_tags;
};
