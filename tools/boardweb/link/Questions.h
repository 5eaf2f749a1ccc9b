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
    std::shared_ptr<const std::string> text; ///< of the reply, or an object with the member "error"
};

/// Carries questions from the HTTP thread to the thread that talks to the host, and answers back.
/// All who wait with the same question share one answer. Any thread.
class Questions {
public:
    /// Somebody who waits for an answer. Called with the lock held: must not call Questions.
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

    /// A question that somebody has asked; empty if nobody waits. Whoever asks the same question
    /// from now on gets a later answer.
    std::optional<Question> take();
    /// Answers the question that was taken.
    void answer(const Answer& answer);

    /// Gives this answer to everybody who waits now or asks later. Nobody is paused any more.
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
    std::optional<Answer> m_last; ///< set at the end
};

} // namespace boardweb
