#include "CBoardDescr.h"

#include <utility>

#include "DID.h"

namespace {

constexpr char DRIVER_NAME[] = "board-descr-driver";

BD::Tag makeTag(BD::TagId id, const TString<char>& data) {
    BD::Tag tag(id);
    static_cast<void>(tag.setData(data)); // always succeeds
    return tag;
}

// Marked cold to keep it out of the fast path: the lookup of a tag that exists.
[[gnu::cold]] BD::Tag* notFound(BD::TagId id, String& error) {
    error = String::format(CBoardDescr::ERR_TAG_NOT_FOUND, id, BD::TAG_ID_TO_STRING(id).c_str());
    return nullptr;
}

} // namespace

CBoardDescr::CBoardDescr() : TDriver(DID_BoardDescr(), DRIVER_NAME) {}

CBoardDescr::CBoardDescr(const char* devicePath, unsigned readChunk, unsigned deviceSize)
    : TDriver(DID_BoardDescr(), DRIVER_NAME), m_devicePath(devicePath), m_readChunk(readChunk),
      m_deviceSize(deviceSize) {}

CBoardDescr::~CBoardDescr() = default;

CBoardDescr::TagList::Iterator CBoardDescr::getTagIterator(TagList::Iterator& from, BD::TagId id) {
    TagList::Iterator position = from;
    while (position != m_tags.end() && position->id != id)
        ++position;
    return position;
}

CBoardDescr::TagList::Iterator CBoardDescr::getTagIterator(BD::TagId id, unsigned index) {
    TagList::Iterator first = m_tags.begin();
    TagList::Iterator position = getTagIterator(first, id);
    for (; index > 0 && position != m_tags.end(); --index)
        position = getTagIterator(++position, id);
    return position;
}

BD::Tag* CBoardDescr::getTag(BD::TagId id, unsigned index, String& error) {
    const TagList::Iterator position = getTagIterator(id, index);
    return position != m_tags.end() ? &*position : notFound(id, error);
}

unsigned CBoardDescr::getNumberOfTag(BD::TagId id) {
    unsigned count = 0;
    TagList::Iterator from = m_tags.begin();
    for (auto position = getTagIterator(from, id); position != m_tags.end();
         position = getTagIterator(++position, id))
        ++count;
    return count;
}

bool CBoardDescr::hasTag(BD::TagId id) {
    String scratch;
    return getTag(id, 0, scratch) != nullptr;
}

XCode CBoardDescr::addTag(BD::TagId id, const TString<char>& data) {
    m_tags.append(makeTag(id, data));
    return XCode();
}

XCode CBoardDescr::insertTag(unsigned index, BD::TagId id, const TString<char>& data) {
    TagList::Iterator position = m_tags.begin();
    for (; index > 0 && position != m_tags.end(); --index)
        ++position;
    m_tags.insert(position, makeTag(id, data));
    return XCode();
}

XCode CBoardDescr::getTag(BD::TagId id, unsigned index, TString<char>& data, String& error) {
    const BD::Tag* const tag = getTag(id, index, error);
    if (!tag)
        return XCode(XCode::FAILURE);
    data = tag->data;
    return XCode();
}

XCode CBoardDescr::setTag(BD::TagId id, unsigned index, const TString<char>& data, String& error) {
    BD::Tag* const tag = getTag(id, index, error);
    return tag ? tag->setData(data) : XCode(XCode::FAILURE);
}

XCode CBoardDescr::removeTag(BD::TagId id, unsigned index, String& error) {
    const TagList::Iterator position = getTagIterator(id, index);
    if (position == m_tags.end()) {
        notFound(id, error);
        return XCode(XCode::FAILURE);
    }
    m_tags.remove(position);
    return XCode();
}
