#include "leds/LedMemory.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "base/Error.h"
#include "base/File.h"
#include "base/FileReplacement.h"
#include "leds/LedLine.h"

namespace board {

namespace {

constexpr char HEADER[] = "LEDs held by the LED service, table ";
constexpr std::size_t MOST_HOLDS = 512, MOST_BYTES = std::size_t{128} * 1024;

[[noreturn]] void fail(std::size_t line, const char* expected) {
    throw Error("line " + std::to_string(line) + " is not from the LED service (expected " +
                expected + ")");
}

/// Removes the first part of `text`, up to `end`, and returns it; everything if there is no `end`.
std::string_view cut(std::string_view& text, char end) {
    const std::size_t length = std::min(text.find(end), text.size());
    const std::string_view front = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    return front;
}

std::uint32_t numberIn(std::string_view word, int base, std::size_t line) {
    std::uint32_t number = 0;
    const char* const end = word.data() + word.size();
    const auto [last, error] = std::from_chars(word.data(), end, number, base);
    if (word.empty() || error != std::errc() || last != end)
        fail(line, "a number");
    return number;
}

LedHold holdFrom(std::string_view text, std::size_t line) {
    LedHold hold;
    hold.steady = numberIn(cut(text, ' '), 16, line);
    hold.blinking = numberIn(cut(text, ' '), 16, line);
    hold.off = numberIn(cut(text, ' '), 16, line);
    if ((hold.steady & hold.blinking) != 0 || ((hold.steady | hold.blinking) & hold.off) != 0)
        fail(line, "each LED in one state");
    const std::string_view marks = cut(text, ' ');
    if (marks.size() != 2 || (marks[0] != 'r' && marks[0] != '-') ||
        (marks[1] != 'g' && marks[1] != '-'))
        fail(line, "the marks 'r' or '-' and 'g' or '-'");
    hold.rolls = marks[0] == 'r';
    hold.leadsGroup = marks[1] == 'g';
    hold.since.seconds = numberIn(cut(text, '.'), 10, line);
    hold.since.nanoseconds = numberIn(cut(text, ' '), 10, line);
    if (hold.since.nanoseconds > 999999999)
        fail(line, "a time");
    hold.line = text;
    if (hold.line.empty() || hold.line.size() > MAX_LED_LINE)
        fail(line, "a command line of at most 80 bytes");
    return hold;
}

} // namespace

std::uint32_t numberOf(const LedTable& table) {
    std::uint32_t number = 2166136261U; // FNV-1a
    const auto add = [&](const std::string& text) {
        for (const char c : text + '\n')
            number = (number ^ static_cast<unsigned char>(c)) * 16777619U;
    };
    for (const LedCtrl::CmdDef& row : table.commands()) {
        add(row.word1);
        add(row.word2);
        for (const std::int64_t part :
             {std::int64_t{row.number}, std::int64_t{row.ledMask}, std::int64_t{row.action},
              std::int64_t{row.group}, std::int64_t{row.timeMs}, std::int64_t{row.isDefault}})
            add(std::to_string(part));
    }
    return number;
}

std::string toText(const LedMemory& memory) {
    std::string text = HEADER;
    text += String::format("%08x\n", memory.table).c_str();
    const std::size_t first = memory.holds.size() - std::min(memory.holds.size(), MOST_HOLDS);
    for (std::size_t i = first; i < memory.holds.size(); ++i) {
        const LedHold& hold = memory.holds[i];
        text += String::format("%x %x %x %c%c %u.%09u ", hold.steady, hold.blinking, hold.off,
                               hold.rolls ? 'r' : '-', hold.leadsGroup ? 'g' : '-',
                               hold.since.seconds, hold.since.nanoseconds)
                    .c_str();
        text += hold.line;
        text += '\n';
    }
    return text;
}

LedMemory ledMemoryFrom(const std::string& text) {
    constexpr std::string_view START = HEADER;
    std::string_view rest = text;
    std::string_view header = cut(rest, '\n');
    if (text.empty() || text.back() != '\n' || header.substr(0, START.size()) != START)
        fail(1, "its header, and a newline at the end of the file");
    header.remove_prefix(START.size());
    LedMemory memory{numberIn(header, 16, 1), {}};
    while (!rest.empty()) {
        if (memory.holds.size() == MOST_HOLDS)
            fail(MOST_HOLDS + 2, "at most 512 lines after the first");
        memory.holds.push_back(holdFrom(cut(rest, '\n'), memory.holds.size() + 2));
    }
    return memory;
}

LedMemoryFile::LedMemoryFile(const std::string& path, EventQueue& events)
    : m_path(path), m_events(events), m_thread("led memory", this) {
    try {
        if (kindOf(path) == FileKind::MISSING)
            writeFile(path, "");
        else if (kindOf(path) != FileKind::REGULAR) // opening a pipe would wait for a writer
            throw Error(path + ": is not a file");
        m_lastText = readFile(path, MOST_BYTES);
        if (!m_lastText.empty())
            m_former = ledMemoryFrom(m_lastText);
    } catch (const Error& error) {
        const std::string what = error.what();
        events.push(
            event::FaultReport{"leds: " + (what.rfind(path, 0) == 0 ? what : path + ": " + what) +
                               "; the LEDs start with the default rows"});
    }
    if (!m_thread.start(String::EMPTY()).isSuccess())
        throw Error("can't create the thread for the memory of the LEDs");
}

LedMemoryFile::~LedMemoryFile() {
    {
        const std::lock_guard<std::mutex> hold(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_one();
    static_cast<void>(m_thread.join());
}

void LedMemoryFile::keep(std::string text) {
    if (text == m_lastText)
        return;
    m_lastText = text;
    {
        const std::lock_guard<std::mutex> hold(m_mutex);
        m_waiting = std::move(text);
    }
    m_changed.notify_one();
}

XCode LedMemoryFile::runThread() {
    std::string fault;
    std::unique_lock<std::mutex> hold(m_mutex);
    for (;;) {
        m_changed.wait(hold, [&] { return m_waiting || m_isEnding; });
        if (!m_waiting)
            return XCode();
        const std::string text = *std::exchange(m_waiting, std::nullopt);
        hold.unlock();
        try {
            // Created here, because FileReplacement would change the umask for a moment, and the
            // LED thread may be creating the pipe at that moment.
            if (kindOf(m_path) == FileKind::MISSING)
                writeFile(m_path, "");
            replaceFile(m_path, text);
            fault.clear();
        } catch (const Error& error) {
            if (std::exchange(fault, error.what()) != error.what())
                m_events.push(event::FaultReport{"leds: " + fault});
        }
        hold.lock();
    }
}

} // namespace board
