#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <string>

#include "ServiceButton.h"
#include "base/Events.h"
#include "base/FileDescriptor.h"
#include "base/files/HostLock.h"
#include "profile/NamedPath.h"

namespace board {

/// The service button of a hosted board. Presses and releases become events.
class ButtonService final : private ServiceButton::Observer {
public:
    /// Returns the time of a clock that nobody sets. Called on the button's thread.
    using Clock = std::function<TYTime()>;

    /// Starts watching. Throws Error if `device` can't be read, if it is neither a pipe nor a
    /// character device (a file whose reads don't wait would keep the processor busy), or if
    /// another host of this user watches the pipe, because each message would reach only one of the
    /// two. `clock` measures how long presses last; without one, the system's monotonic clock does.
    ButtonService(const NamedPath& device, EventQueue& events, Clock clock = {});
    ~ButtonService();
    ButtonService(const ButtonService&) = delete;
    ButtonService& operator=(const ButtonService&) = delete;

    /// False if the watch has ended after a device error or because the path leads to another file.
    /// The error and the end are reported as events.
    bool isWatching() const { return m_button.isWatching(); }

private:
    /// Monitors the button and reports if the device fails. Ends if the path leads to a file other
    /// than `file`.
    class Watch final : public ServiceButton {
    public:
        Watch(const String& path, Observer* observer, const FileDescriptor& file,
              EventQueue& events)
            : ServiceButton(path, observer), m_path(path), m_file(file), m_events(events) {}
        ~Watch() override { static_cast<void>(stop()); }
        bool isWatching() const { return !m_hasFailed; }
        XCode runThread() override;
        void processButtonMessage(const String& message) override;

    private:
        void end(const String& why);
        void report(const String& why);

        const String m_path;
        const FileDescriptor& m_file;
        EventQueue& m_events;
        std::atomic<bool> m_hasFailed{false};
    };

    void onButtonPressed(const TYTime& pressTime) override;
    void onButtonReleased(const TYTime& heldFor) override;

    EventQueue& m_events;
    const Clock m_clock;
    std::optional<TYTime> m_pressedAt; ///< by the clock; only the button's thread uses it
    const FileDescriptor m_file;       ///< the button
    HostLock m_lock;                   ///< on the button, if it is a pipe
    Watch m_button;
};

} // namespace board
