#include "view_models/chat/TurnRecorder.h"

#include "async/Clock.h"
#include "models/ChatMessage.h"
#include "utils/text/Text.h"
#include "view_models/chat/MessageListModel.h"
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
    , m_text(std::move(text))
    , m_stored(m_text)
    , m_storedAt(clock.elapsed())
    , m_messages(messages)
    , m_companion(companion)
    , m_clock(clock)
{}

TurnRecorder::~TurnRecorder() = default;

void TurnRecorder::store()
{
    m_storedAt = m_clock.elapsed();
    m_heldBack.reset();
    if (m_stored == m_text)
        return;
    m_message->setContent(m_text);
    m_stored = m_text;
    changed();
}

void TurnRecorder::operator()(const Agent::Text &event)
{
    m_text += event.piece;
    if (!event.piece.isEmpty()) {
        m_messages.signalIndicator(m_message->id(), {Signal::Kind::text});
        m_companion.transition(CompanionState::speaking);
    }
    const auto sinceStored = m_clock.elapsed() - m_storedAt;
    if (sinceStored >= storeInterval)
        store();
    else if (!m_heldBack)
        m_heldBack = m_clock.after(storeInterval - sinceStored, [this] { store(); });
}

void TurnRecorder::operator()(const Agent::RetractText &event)
{
    m_text = Text::droppingLast(m_text, event.count);
    store();
    if (m_text.isEmpty())
        m_messages.signalIndicator(m_message->id(), {Signal::Kind::emptiedAgain, m_clock.now()});
}

void TurnRecorder::operator()(const Agent::ToolStarted &event)
{
    store();
    m_companion.transition(CompanionState::thinking);
    m_message->appendToolLine(ToolLabels::running(event.call));
    changed();
}

void TurnRecorder::operator()(const Agent::ToolFinished &event)
{
    if (event.result.isError)
        m_message->replaceLastToolLine(ToolLabels::failed(event.call), ToolLineState::failed);
    else
        m_message->replaceLastToolLine(ToolLabels::finished(event.call));
    if (!event.result.isError)
        addSources(event);
    changed();
}

void TurnRecorder::operator()(const Agent::Thinking &)
{
    m_messages.signalIndicator(m_message->id(), {Signal::Kind::thinking});
}

void TurnRecorder::operator()(const Agent::TruncatedByTokenLimit &)
{
    m_message->setHitTokenLimit(true);
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
