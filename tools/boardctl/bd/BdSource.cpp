#include "bd/BdSource.h"

#include <chrono>
#include <optional>

#include "base/Error.h"
#include "bd/BdCommands.h"
#include "output/Messages.h"
#include "sysfs/DeviceLocator.h"

namespace boardctl {

namespace {

board::DescriptorSource sourceOf(const BoardProfile& chosen) {
    const std::optional<board::DescriptorProfile>& descriptor = chosen.profile().descriptor;
    if (!descriptor)
        throw board::Error(chosen.profilePath() + ": the board has no descriptor");
    std::optional<board::DescriptorSource> source;
    board::withPlaceInErrors(descriptor->device, [&](const std::string& named) {
        source = board::DescriptorSource::ofBoard(board::DeviceLocator().locate(named),
                                                  descriptor->readChunk, descriptor->size);
    });
    return *source;
}

board::DescriptorSource sourceOf(const std::string& image) {
    return image == STANDARD_STREAM ? board::DescriptorSource::ofStandardInput()
                                    : board::DescriptorSource::ofFile(image);
}

} // namespace

board::LockWait lockWait(const Options& options) {
    board::LockWait wait;
    if (options.lockSeconds)
        wait.most = std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::duration<double>(*options.lockSeconds));
    wait.onWait = complain;
    return wait;
}

BdSource::BdSource(const Options& options, const std::string& image)
    : m_board(image.empty() ? std::make_unique<BoardProfile>(options) : nullptr),
      m_source(m_board ? sourceOf(*m_board) : sourceOf(image)) {
    m_source.waitForLock(lockWait(options));
}

int printImage(const Options& options, const std::string& image,
               const std::function<int(const board::TagImage&)>& print) {
    const BdSource chosen(options, image);
    const board::TagImage loaded = chosen.source().load();
    const int status = print(loaded);
    if (!loaded.fault())
        return status;
    static_cast<void>(flushOutput()); // prints the good tags before the fault
    complain(*loaded.fault());
    return status == DONE ? FAILED : status;
}

} // namespace boardctl
