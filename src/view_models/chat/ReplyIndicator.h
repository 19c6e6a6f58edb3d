#pragma once

#include <QDateTime>
#include <QString>

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
        enum class Kind { emptiedAgain, thinking, text, finished, cancelled, failed };
        Kind kind;
        QDateTime since = {}; // emptiedAgain only
    };

    explicit ReplyIndicator(QDateTime since)
        : m_state(Dots{std::move(since)})
    {}

    [[nodiscard]] const State &state() const { return m_state; }

    // The turn is still at work.
    [[nodiscard]] bool isRunning() const;

    // True when the state really changed.
    bool apply(const Signal &signal);

    // The words beside the animation at a moment, with whole seconds where they help; empty for none.
    [[nodiscard]] QString label(const QDateTime &now) const;

private:
    [[nodiscard]] State next(const Signal &signal) const;

    State m_state;
};

} // namespace morvane
