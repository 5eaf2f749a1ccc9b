#pragma once

#include <atomic>
#include <string>

#include "ServiceButton.h"
#include "base/Events.h"
#include "profile/DeviceLocator.h"
#include "profile/NamedPath.h"

namespace board {

/// The service button of a hosted board: presses and releases come as events.
class ButtonService final : private ServiceButton::Observer {
public:
    /// Starts watching. Throws Error, with the place that names the device, where it is neither a
    /// pipe nor a character device (a read that does not wait would keep the processor busy), where
    /// it can't be read, and where another program watches a pipe: each message reaches one of the
    /// two only.
    ButtonService(const NamedPath& device, EventQueue& events);
    ~ButtonService();
    ButtonService(const ButtonService&) = delete;
    ButtonService& operator=(const ButtonService&) = delete;

    /// False once an error of the device has ended it; the error and that came as events.
    bool isWatching() const { return m_button.isWatching(); }

private:
    /// Tells when the device has failed.
    class Watch final : public ServiceButton {
    public:
        Watch(const String& path, Observer* observer, EventQueue& events)
            : ServiceButton(path, observer), m_path(path), m_events(events) {}
        ~Watch() override { static_cast<void>(stop()); }
        bool isWatching() const { return !m_hasFailed; }
        XCode runThread() override;
        void processButtonMessage(const String& message) override;

    private:
        void end(const String& why);

        const String m_path;
        EventQueue& m_events;
        std::atomic<bool> m_hasFailed{false};
    };

    /// Keeps a pipe open for both while the button's own descriptor comes and goes with each
    /// message, so that what is written in between is not lost, and locked.
    class Hold {
    public:
        explicit Hold(const std::string& path);
        ~Hold();
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

    private:
        int m_pipe = -1;
    };

    void onButtonPressed(const TYTime& pressTime) override;
    void onButtonReleased(const TYTime& heldFor) override;

    EventQueue& m_events;
    bool m_isPressed = false; ///< the button's thread alone looks at it
    const Hold m_hold;
    Watch m_button;
};

} // namespace board
