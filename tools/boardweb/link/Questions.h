#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace boardweb {

/// What a client can ask the host.
enum class Question { STATUS, LEDS, DESCRIPTOR, METRICS };

/// What the host replied, or why it did not.
struct Answer {
    bool isReply = false;
    std::shared_ptr<const std::string> text; ///< the reply, or an object with the member "error"
};

/// Carries questions from the HTTP thread to the thread that talks to the host, and carries the
/// answers back. Clients that wait with the same question share one answer. Can be used on any
/// thread.
class Questions {
public:
    /// A client that waits for an answer. Its functions are called with the lock held, so they must
    /// not call Questions.
    class Asker {
    public:
        virtual ~Asker() = default;
        virtual void pause() = 0;
        virtual void resume(const Answer& answer) = 0;
    };

    /// `wake` is called, with the lock held, after each question.
    explicit Questions(std::function<void()> wake) : m_wake(std::move(wake)) {}

    /// Pauses the asker, which must exist until there is an answer.
    void ask(Question question, Asker& asker);

    /// A question that clients have asked; empty if none waits. A client that asks the same
    /// question from now on gets a later answer.
    std::optional<Question> take();
    /// Answers the question that was taken.
    void answer(const Answer& answer);

    /// Gives this answer to all clients that wait now or ask later, so that none stays paused.
    void end(const Answer& answer);

private:
    static constexpr std::size_t KINDS = 4;
    using Askers = std::vector<Asker*>;

    static void resume(Askers& askers, const Answer& answer);

    const std::function<void()> m_wake;
    std::mutex m_mutex; // guards everything below
    std::array<Askers, KINDS> m_waiting;
    Askers m_taken;
    std::size_t m_lastTaken = 0;
    std::optional<Answer> m_last; ///< the answer that `end` gave
};

} // namespace boardweb
