// Passes an arbitrary message to the service button: it must cause exactly one press, release or
// report. Without an observer, it must cause a report.

#include <cstring>

#include "Oracle.h"
#include "RTD.h"
#include "ServiceButton.h"

using fuzz::expect;

namespace {

struct Watcher : ServiceButton::Observer, RTD::Monitor {
    void onButtonPressed(const TYTime&) override { ++presses; }
    void onButtonReleased(const TYTime& heldFor) override {
        ++releases;
        expect(heldFor.nanoseconds <= 999999999, "a time has less than a second of nanoseconds");
    }
    void report(int reportLevel, const String& reportText) override {
        ++reports;
        level = reportLevel;
        text = reportText.c_str();
    }
    int presses = 0, releases = 0, reports = 0, level = 0;
    std::string text;
};

bool begins(const std::string& text, const char* word) {
    return text.compare(0, std::strlen(word), word) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string message = fuzz::textOf(bytes, size);
    const String handed(message.data(), static_cast<unsigned>(message.size()));
    Watcher watcher, unobserved;
    MON_EVENT = &watcher;
    ServiceButton button("/nowhere", &watcher);
    button.processButtonMessage(handed);
    MON_EVENT = &unobserved;
    ServiceButton("/nowhere", nullptr).processButtonMessage(handed);
    MON_EVENT = nullptr;
    const bool isPress = begins(message, "pressed"), isRelease = begins(message, "released");
    expect(watcher.presses == isPress && watcher.releases == isRelease,
           "a message that begins with a word is its event");
    expect(watcher.reports == (!isPress && !isRelease), "anything else is a report");
    if (watcher.reports > 0)
        expect(watcher.level == 3 &&
                   watcher.text == "INVALID SRV-BUTTON MESSAGE: " + std::string(message.c_str()),
               "a report quotes the message");
    expect(unobserved.reports == 1 && unobserved.text == "NO SRV-BUTTON OBSERVER",
           "without an observer every message is reported");
    return 0;
}
