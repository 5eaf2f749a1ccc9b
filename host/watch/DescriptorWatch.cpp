#include "watch/DescriptorWatch.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <utility>

#include <fcntl.h>

#include "base/Error.h"
#include "base/File.h"
#include "base/files/FileLock.h"
#include "descriptor/DescriptorSource.h"

namespace board {

namespace {

/// Whether the file begins with `expected` and, if `isWhole`, holds nothing else.
bool holds(const FileDescriptor& file, const std::string& path, const std::string& expected,
           bool isWhole) {
    char bytes[4096];
    for (std::size_t done = 0;;) {
        const std::size_t size = std::min(sizeof bytes, expected.size() - done + (isWhole ? 1 : 0));
        const ssize_t count = tryReadAt(file, bytes, size, static_cast<off_t>(done));
        if (count < 0)
            failWith(path, "can't read", errno);
        if (count == 0)
            return done == expected.size();
        if (expected.compare(done, static_cast<std::size_t>(count), bytes,
                             static_cast<std::size_t>(count)) != 0)
            return false;
        done += static_cast<std::size_t>(count);
    }
}

/// The chunk of each tag, by its identifier and the number of earlier tags with that identifier.
std::map<std::pair<BD::TagId, unsigned>, std::string> chunksOf(const TagImage& image) {
    std::map<std::pair<BD::TagId, unsigned>, std::string> chunks;
    std::map<BD::TagId, unsigned> counts;
    for (const ImageTag& tag : image.tags())
        chunks[{tag.tag.id, counts[tag.tag.id]++}] = image.chunkOf(tag);
    return chunks;
}

/// How many tags differ, were added or are gone.
unsigned countChanges(const TagImage& before, const TagImage& after) {
    auto former = chunksOf(before);
    unsigned changes = 0;
    for (const auto& [tag, chunk] : chunksOf(after)) {
        const auto found = former.find(tag);
        if (found == former.end() || found->second != chunk)
            ++changes;
        if (found != former.end())
            former.erase(found);
    }
    return changes + static_cast<unsigned>(former.size());
}

} // namespace

Result<std::optional<event::DescriptorChanged>> DescriptorWatch::look(const std::string& path) {
    using Change = std::optional<event::DescriptorChanged>;
    try {
        const FileDescriptor file = openFile(path, O_RDONLY | O_NONBLOCK);
        if (m_seen && holds(file, path, m_seen->bytes, m_seen->isWhole))
            return Change();
        if (!tryLockShared(file))
            return Change();
        auto source = DescriptorSource::ofBoard(path, m_profile.readChunk, m_profile.size);
        source.waitForLock({std::chrono::milliseconds(0)});
        const TagImage image = source.load();
        // Bytes after the terminator don't count. Of a corrupt image, all bytes count.
        const bool isWhole = image.isCorrupt() || !image.terminator();
        const auto former = std::exchange(
            m_seen, Seen{image.bytes().substr(0, isWhole ? std::string::npos : image.usedBytes()),
                         isWhole});
        if (!former)
            return Change();
        const TagImage before(former->bytes);
        const unsigned tags = countChanges(before, image);
        if (tags == 0 && image.fault() == before.fault())
            return Change();
        return Change({tags, image.fault()});
    } catch (const Error& error) {
        return Fault{error.what()};
    }
}

} // namespace board
