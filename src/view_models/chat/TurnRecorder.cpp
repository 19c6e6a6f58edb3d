#include "view_models/chat/TurnRecorder.h"

#include "async/Clock.h"
#include "models/ChatMessage.h"
#include "utils/text/Text.h"
#include "utils/text/ThinkingTags.h"
#include "view_models/chat/MessageListModel.h"
#include "view_models/chat/ToolDetails.h"
#include "view_models/chat/ToolLabels.h"
#include "view_models/companion/CompanionViewModel.h"

#include <algorithm>

namespace morvane {

namespace {

constexpr qsizetype mostDomains = 5;

using Signal = ReplyIndicator::Signal;

} // namespace

TurnRecorder::TurnRecorder(std::shared_ptr<ChatMessage> message, QString text, MessageListModel &messages,
                           CompanionViewModel &companion, Clock &clock)
    : m_message(std::move(message))
    , m_before(std::move(text))
    , m_stored(m_before)
    , m_thoughtBefore(messages.thoughtFor(m_message->id()))
    , m_storedAt(clock.elapsed())
    , m_messages(messages)
    , m_companion(companion)
    , m_clock(clock)
{}

TurnRecorder::~TurnRecorder() = default;

QString TurnRecorder::text() const
{
    return m_before.isEmpty() ? m_reply : ThinkingTags::joined(m_before, m_reply);
}

void TurnRecorder::store()
{
    m_storedAt = m_clock.elapsed();
    m_heldBack.reset();
    QString whole = text();
    if (m_stored == whole)
        return;
    if (const auto taken = m_thought.taken())
        m_messages.setThoughtFor(m_message->id(), m_thoughtBefore + *taken);
    m_message->setContent(whole);
    m_stored = std::move(whole);
    changed();
}

void TurnRecorder::hear(const QString &piece)
{
    m_reply += piece;
    switch (m_thought.hear(m_reply, m_clock.elapsed())) {
    case ThoughtTimer::Phase::undecided:
        return;
    case ThoughtTimer::Phase::thinking:
        m_messages.signalIndicator(m_message->id(), {Signal::Kind::thinking, m_clock.now()});
        return;
    case ThoughtTimer::Phase::answering:
        m_messages.signalIndicator(m_message->id(), {Signal::Kind::text, m_clock.now()});
        m_companion.transition(CompanionState::speaking);
        return;
    }
}

void TurnRecorder::operator()(const Agent::Text &event)
{
    if (!event.piece.isEmpty())
        hear(event.piece);
    const auto sinceStored = m_clock.elapsed() - m_storedAt;
    if (sinceStored >= storeInterval)
        store();
    else if (!m_heldBack)
        m_heldBack = m_clock.after(storeInterval - sinceStored, [this] { store(); });
}

void TurnRecorder::operator()(const Agent::RetractText &event)
{
    const qsizetype ofReply = Text::characterCount(m_reply);
    m_reply = Text::droppingLast(m_reply, event.count);
    if (event.count > ofReply)
        m_before = Text::droppingLast(m_before, event.count - ofReply);
    m_thought = {};
    store();
    if (m_stored.isEmpty())
        m_messages.signalIndicator(m_message->id(), {Signal::Kind::emptiedAgain, m_clock.now()});
}

void TurnRecorder::operator()(const Agent::ToolStarted &event)
{
    store();
    m_messages.signalIndicator(m_message->id(), {Signal::Kind::toolStarted});
    m_companion.transition(CompanionState::thinking);
    m_message->appendToolLine(ToolLabels::running(event.call), ToolLineState::running,
                              ToolDetails::of(event.call));
    changed();
}

void TurnRecorder::operator()(const Agent::ToolFinished &event)
{
    m_messages.signalIndicator(m_message->id(), {Signal::Kind::toolFinished, m_clock.now()});
    const AIToolResult &result = event.result;
    const ToolDetail detail = ToolDetails::of(event.call, result);
    if (result.isError)
        m_message->replaceLastToolLine(ToolLabels::failed(event.call),
                                       result.isDeclined ? ToolLineState::declined : ToolLineState::failed,
                                       detail);
    else
        m_message->replaceLastToolLine(ToolLabels::finished(event.call), ToolLineState::finished, detail);
    if (!event.result.isError)
        addSources(event);
    changed();
}

void TurnRecorder::operator()(const Agent::Thinking &)
{
    m_messages.signalIndicator(m_message->id(), {Signal::Kind::thinking, m_clock.now()});
}

void TurnRecorder::operator()(const Agent::TruncatedByTokenLimit &)
{
    m_message->setHitTokenLimit(true);
    changed();
}

void TurnRecorder::operator()(const Agent::ToolsRejected &)
{
    const QString line = ToolLabels::rejected();
    if (m_message->toolSummary().value_or(QString()).endsWith(line)) // the part that is continued said so
        return;
    m_message->appendToolLine(line, ToolLineState::note);
    changed();
}

void TurnRecorder::addSources(const Agent::ToolFinished &event)
{
    const QStringList found = ToolLabels::sourceDomains(event.call, event.result);
    if (found.isEmpty())
        return;
    m_domains += found;
    m_domains.removeDuplicates();
    if (const QString host = ToolLabels::pageHost(event.call); !host.isEmpty())
        m_read += host;
    m_read.removeDuplicates();
    m_message->setSourceDomains(shownDomains());
}

// The first ones seen, but before all others those of the pages that were read.
QStringList TurnRecorder::shownDomains() const
{
    QStringList shown = m_read.first(std::min(m_read.size(), mostDomains));
    for (const QString &domain : m_domains) {
        if (shown.size() < mostDomains && !shown.contains(domain))
            shown += domain;
    }
    std::ranges::sort(shown, {}, [this](const QString &domain) { return m_domains.indexOf(domain); });
    return shown;
}

void TurnRecorder::changed()
{
    m_messages.messageChanged(m_message->id());
}

} // namespace morvane
