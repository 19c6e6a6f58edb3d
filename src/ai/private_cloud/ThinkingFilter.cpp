#include "ai/private_cloud/ThinkingFilter.h"

#include "utils/text/Text.h"

#include <algorithm>
#include <utility>

namespace morvane {

namespace {

constexpr QStringView opening = u"<think>";
constexpr QStringView closing = u"</think>";
constexpr qsizetype heldCharacters = 600;

} // namespace

QString ThinkingFilter::accept(const QString &text)
{
    if (m_state == State::passing)
        return text;
    m_buffer += text;
    switch (m_state) {
    case State::deciding:
        return decide();
    case State::inThinking:
        return think();
    case State::afterThinking:
        return skipWhiteSpace();
    case State::passing:
        break;
    }
    return {};
}

QString ThinkingFilter::flush()
{
    if (m_state == State::deciding)
        return pass();
    return {};
}

QString ThinkingFilter::decide()
{
    const QStringView rest = Text::leadingTrimmed(m_buffer);
    if (rest.startsWith(opening)) {
        m_buffer = rest.sliced(opening.size()).toString();
        m_state = State::inThinking;
        return think();
    }
    if (m_serverSendsReasoning)
        return opening.startsWith(rest) ? QString() : pass();
    const qsizetype end = m_buffer.indexOf(closing);
    if (end >= 0) {
        m_buffer.remove(0, end + closing.size());
        m_droppedThinking = true;
        m_state = State::afterThinking;
        return skipWhiteSpace();
    }
    return Text::hasAtLeast(m_buffer, heldCharacters) ? pass() : QString();
}

QString ThinkingFilter::think()
{
    const qsizetype end = m_buffer.indexOf(closing);
    if (end < 0) {
        m_buffer = m_buffer.last(std::min(m_buffer.size(), closing.size() - 1));
        return {};
    }
    m_buffer.remove(0, end + closing.size());
    m_state = State::afterThinking;
    return skipWhiteSpace();
}

QString ThinkingFilter::skipWhiteSpace()
{
    m_buffer = Text::leadingTrimmed(m_buffer).toString();
    return m_buffer.isEmpty() ? QString() : pass();
}

QString ThinkingFilter::pass()
{
    m_state = State::passing;
    return std::exchange(m_buffer, {});
}

} // namespace morvane
