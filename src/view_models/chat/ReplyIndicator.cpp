#include "view_models/chat/ReplyIndicator.h"

#include <algorithm>
#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Stage {
    qint64 threshold; // seconds
    QLatin1StringView text;
};

constexpr std::array<Stage, 4> stages{{
    {5, QLatin1StringView("Working on it")},
    {14, QLatin1StringView("Thinking it through")},
    {24, QLatin1StringView("Putting it together")},
    {40, QLatin1StringView("Still thinking, bigger question than it looked")},
}};

QString withSeconds(const QString &text, qint64 seconds)
{
    return text + u" "_s + QString::number(seconds) + u"s"_s;
}

QString dotsLabel(qint64 seconds)
{
    const auto reached = std::find_if(stages.rbegin(), stages.rend(),
                                      [seconds](const Stage &stage) { return seconds >= stage.threshold; });
    return reached == stages.rend() ? QString() : withSeconds(reached->text, seconds);
}

QString thinkingLabel(qint64 seconds)
{
    return seconds < 1 ? u"Thinking…"_s : withSeconds(u"Thinking…"_s, seconds);
}

} // namespace

bool ReplyIndicator::isRunning() const
{
    return !std::holds_alternative<Done>(m_state) && !std::holds_alternative<Cancelled>(m_state);
}

bool ReplyIndicator::apply(const Signal &signal)
{
    m_heard = signal.since;
    const State following = next(signal);
    if (following == m_state)
        return false;
    m_state = following;
    return true;
}

ReplyIndicator::State ReplyIndicator::next(const Signal &signal) const
{
    if (!isRunning())
        return m_state;
    switch (signal.kind) {
    case Signal::Kind::emptiedAgain:
        return std::holds_alternative<Streaming>(m_state) ? State(Dots{signal.since}) : m_state;
    case Signal::Kind::thinking:
        if (const auto *dots = std::get_if<Dots>(&m_state))
            return Thinking{dots->since};
        return m_state;
    case Signal::Kind::text:
        return Streaming{};
    case Signal::Kind::finished:
    case Signal::Kind::failed:
        return Done{};
    case Signal::Kind::cancelled:
        return Cancelled{};
    case Signal::Kind::toolStarted:
    case Signal::Kind::toolFinished:
        return m_state;
    }
    return m_state;
}

std::optional<QDateTime> ReplyIndicator::stalledFrom() const
{
    if (!m_heard.isValid() || !std::holds_alternative<Streaming>(m_state))
        return std::nullopt;
    return m_heard.addSecs(longestSilence.count());
}

bool ReplyIndicator::isStalled(const QDateTime &now) const
{
    const auto from = stalledFrom();
    return from && *from <= now;
}

QString ReplyIndicator::label(const QDateTime &now) const
{
    if (isStalled(now))
        return withSeconds(u"Nothing new for"_s, m_heard.secsTo(now));
    const auto elapsed = [&now](const QDateTime &since) { return std::max<qint64>(0, since.secsTo(now)); };
    if (const auto *dots = std::get_if<Dots>(&m_state))
        return dotsLabel(elapsed(dots->since));
    if (const auto *thinking = std::get_if<Thinking>(&m_state))
        return thinkingLabel(elapsed(thinking->since));
    return {};
}

} // namespace morvane
