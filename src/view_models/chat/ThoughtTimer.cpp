#include "view_models/chat/ThoughtTimer.h"

#include "utils/text/ThinkingTags.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// A reply with more tags than that is not what any model writes, and reading it again for each takes long.
constexpr int mostLooks = 200;

QString counted(std::chrono::seconds::rep count, QLatin1StringView unit)
{
    return QString::number(count) + u' ' + unit + (count == 1 ? u""_s : u"s"_s);
}

} // namespace

ThoughtTimer::Phase ThoughtTimer::hear(const QString &reply, std::chrono::milliseconds now)
{
    if (!m_since)
        m_since = now;
    const bool wasThinking = m_phase == Phase::thinking;
    const qsizetype from = std::max<qsizetype>(0, m_heard - ThinkingTags::closing.size());
    const bool mayChange =
        m_phase == Phase::undecided || QStringView(reply).sliced(from).contains(ThinkingTags::closing);
    m_heard = reply.size();
    if (mayChange)
        look(reply, now);
    if (wasThinking || m_phase == Phase::thinking)
        m_until = now;
    return m_phase;
}

void ThoughtTimer::look(const QString &reply, std::chrono::milliseconds now)
{
    if (++m_looks > mostLooks) {
        m_phase = Phase::answering;
        return;
    }
    const auto parts = ThinkingTags::split(reply, ThinkingTags::Extent::growing);
    m_phase = parts.isOpen ? Phase::thinking : parts.answer.isEmpty() ? Phase::undecided : Phase::answering;
    if (!parts.thinking.isEmpty() && !m_until)
        m_until = now; // the tag that ends the thinking is the first that came
}

std::optional<std::chrono::milliseconds> ThoughtTimer::taken() const
{
    return m_until ? std::optional(*m_until - *m_since) : std::nullopt;
}

QString ThoughtTimer::words(std::optional<std::chrono::milliseconds> taken)
{
    if (!taken)
        return u"Thought before answering"_s; // in a former run
    const auto seconds = std::chrono::round<std::chrono::seconds>(*taken).count();
    if (seconds < 1)
        return u"Thought for a moment"_s;
    QString words = u"Thought for "_s;
    if (seconds >= 60)
        words += counted(seconds / 60, "minute"_L1);
    if (seconds >= 60 && seconds % 60 > 0)
        words += u' ';
    return seconds % 60 > 0 ? words + counted(seconds % 60, "second"_L1) : words;
}

} // namespace morvane
