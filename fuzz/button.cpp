// Any message is a press, a release or a report, and never two of them.

#include <cstdlib>
#include <cstring>

#include "RTD.h"
#include "ServiceButton.h"

namespace {

struct Watcher : ServiceButton::Observer, RTD::Monitor {
    void onButtonPressed(const TYTime&) override { ++presses; }
    void onButtonReleased(const TYTime& heldFor) override {
        ++releases;
        if (heldFor.nanoseconds > 999999999)
            std::abort();
    }
    void report(int, const String&) override { ++reports; }
    int presses = 0, releases = 0, reports = 0;
};

bool begins(const std::string& text, const char* word) {
    return text.compare(0, std::strlen(word), word) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string message(reinterpret_cast<const char*>(bytes), size);
    Watcher watcher;
    MON_EVENT = &watcher;
    ServiceButton button("/nowhere", &watcher);
    button.processButtonMessage(String(message.data(), static_cast<unsigned>(message.size())));
    MON_EVENT = nullptr;
    const bool isPress = begins(message, "pressed"), isRelease = begins(message, "released");
    if (watcher.presses != isPress || watcher.releases != isRelease ||
        watcher.reports != (!isPress && !isRelease))
        std::abort();
    return 0;
}
