#pragma once

#include <QDateTime>
#include <QString>

#include <chrono>
#include <optional>
#include <variant>

namespace morvane {

// The small state machine behind the "working" line of a reply.
class ReplyIndicator {
public:
    struct Dots {
        QDateTime since;
        bool operator==(const Dots &) const = default;
    };
    struct Thinking {
        QDateTime since;
        bool operator==(const Thinking &) const = default;
    };
    struct Streaming {
        bool operator==(const Streaming &) const = default;
    };
    struct Done {
        bool operator==(const Done &) const = default;
    };
    struct Cancelled {
        bool operator==(const Cancelled &) const = default;
    };
    using State = std::variant<Dots, Thinking, Streaming, Done, Cancelled>;

    struct Signal {
        enum class Kind {
            emptiedAgain,
            thinking,
            text,
            finished,
            cancelled,
            failed,
            toolStarted,
            toolFinished
        };
        Kind kind;
        QDateTime since = {}; // when it was given; not for an end, nor for the start of a tool
    };

    // A reply that began and then brings nothing for so long is said to stand still.
    static constexpr std::chrono::seconds longestSilence{10};

    explicit ReplyIndicator(QDateTime since)
        : m_state(Dots{std::move(since)})
    {}

    [[nodiscard]] const State &state() const { return m_state; }

    // The turn is still at work.
    [[nodiscard]] bool isRunning() const;

    // True when the state really changed.
    bool apply(const Signal &signal);

    // When the reply will be said to stand still, if nothing comes until then; nothing while something else
    // is said or a tool is at work.
    [[nodiscard]] std::optional<QDateTime> stalledFrom() const;
    [[nodiscard]] bool isStalled(const QDateTime &now) const;

    // The words beside the animation at a moment, with whole seconds where they help; empty for none.
    [[nodiscard]] QString label(const QDateTime &now) const;

private:
    [[nodiscard]] State next(const Signal &signal) const;

    State m_state;
    QDateTime m_heard; // the last sign of the model; invalid while a tool is at work
};

} // namespace morvane
