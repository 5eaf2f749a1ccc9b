#include "link/Questions.h"

namespace boardweb {

void Questions::ask(Question question, Asker& asker) {
    const std::lock_guard lock(m_mutex);
    m_waiting.at(static_cast<std::size_t>(question)).push_back(&asker);
    asker.pause();
    if (m_last)
        resume(m_waiting.at(static_cast<std::size_t>(question)), *m_last);
    else
        m_wake();
}

std::optional<Question> Questions::take() {
    const std::lock_guard lock(m_mutex);
    // Takes turns, so that a question that is asked all the time does not keep others waiting.
    for (std::size_t i = 1; i <= KINDS; ++i) {
        const std::size_t kind = (m_lastTaken + i) % KINDS;
        if (m_waiting[kind].empty())
            continue;
        m_lastTaken = kind;
        m_taken.swap(m_waiting[kind]);
        return static_cast<Question>(kind);
    }
    return std::nullopt;
}

void Questions::answer(const Answer& answer) {
    const std::lock_guard lock(m_mutex);
    resume(m_taken, answer);
}

void Questions::end(const Answer& answer) {
    const std::lock_guard lock(m_mutex);
    m_last = answer;
    resume(m_taken, answer);
    for (Askers& askers : m_waiting)
        resume(askers, answer);
}

void Questions::resume(Askers& askers, const Answer& answer) {
    for (Asker* const asker : askers)
        asker->resume(answer);
    askers.clear();
}

} // namespace boardweb
