#include "view_models/chat/GhostDesk.h"

#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/PersistenceError.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Identifier.h"
#include "view_models/chat/BannerDesk.h"
#include "view_models/chat/ChatStores.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Answer = GhostQuestion::Answer;

} // namespace

GhostDesk::GhostDesk(Services services, QObject *parent)
    : QObject(parent)
    , m_services(std::move(services))
{}

bool GhostDesk::isOn() const
{
    return m_services.stores.ghost() != nullptr;
}

bool GhostDesk::holdsMessages() const
{
    const GhostChat *ghost = m_services.stores.ghost();
    return ghost && !ghost->conversation->isEmpty();
}

bool GhostDesk::canToggle() const
{
    const auto &open = m_services.open.current();
    return isOn() || !open || open->isEmpty();
}

GhostExplainer GhostDesk::explainer() const
{
    const auto stateLine = [this] {
        if (savesWhenTurnEnds())
            return u"Ghost mode is on. This chat is saved as a normal one when the reply finishes."_s;
        if (holdsMessages())
            return u"Ghost mode is on. Click to save this chat as a normal one."_s;
        if (isOn())
            return u"Ghost mode is on. Click to turn it off."_s;
        if (canToggle())
            return u"Ghost mode is off. Click to start a Ghost chat."_s;
        return u"Start a new chat to use Ghost mode."_s;
    };
    return {
        u"Ghost mode"_s,
        u"Like a private window in a browser. Nothing from a Ghost chat is saved on this %1, and leaving "
        u"one asks whether to drop or keep it. It still runs on the same model as your other chats."_s.arg(
            DesktopWords::here().device),
        stateLine()};
}

// What is asked

QString GhostDesk::questionId() const
{
    if (m_pendingGhostDeparture)
        return Identifier::text(m_pendingGhostDeparture->id);
    return m_pendingGhostModeOff ? Identifier::text(m_pendingGhostModeOff->id) : QString();
}

GhostQuestion GhostDesk::question() const
{
    if (m_pendingGhostDeparture)
        return GhostQuestion::leaving(isLocked());
    return m_pendingGhostModeOff ? GhostQuestion::saving() : GhostQuestion{};
}

void GhostDesk::answer(const QString &questionId, int button)
{
    if (questionId.isEmpty() || questionId != this->questionId())
        return;
    const Answer given = question().answer(button);
    if (m_pendingGhostDeparture)
        answerDeparture(given);
    else
        answerModeOff(given);
}

// Staying takes back a save that waits for its turn.
void GhostDesk::answerModeOff(Answer answer)
{
    const auto question = std::exchange(m_pendingGhostModeOff, std::nullopt);
    m_ghostSaveWhenTurnEnds.reset();
    Q_EMIT questionChanged();
    const GhostChat *ghost = m_services.stores.ghost();
    if (answer == Answer::keep && ghost && ghost->conversation->id() == question->chatID) {
        if (m_services.isAtWork(*ghost->conversation))
            m_ghostSaveWhenTurnEnds = question;
        else
            keepGhost();
    }
    Q_EMIT changed();
}

void GhostDesk::answerDeparture(Answer answer)
{
    const auto departure = std::exchange(m_pendingGhostDeparture, std::nullopt);
    Q_EMIT questionChanged();
    if (answer == Answer::drop)
        depart(departure->then);
    else if (answer == Answer::keep && keepGhost())
        departure->then();
}

// How it begins

void GhostDesk::toggleGhostMode()
{
    if (!isOn()) {
        if (canToggle())
            begin(OpenConversation::Composer::stays);
    } else if (holdsMessages()) {
        m_pendingGhostModeOff =
            GhostModeOffQuestion{QUuid::createUuid(), m_services.stores.ghost()->conversation->id()};
        Q_EMIT questionChanged();
    } else {
        depart([&open = m_services.open] { open.openNew(OpenConversation::Composer::stays); });
    }
}

void GhostDesk::newGhostChat()
{
    if (!isOn() && canToggle())
        toggleGhostMode();
    else if (!isOn() || holdsMessages())
        leave([this] { begin(OpenConversation::Composer::ofChat); });
}

void GhostDesk::begin(OpenConversation::Composer composer)
{
    try {
        m_services.open.show(m_services.stores.begin().conversation, composer);
        Q_EMIT isOnChanged();
    } catch (...) {
        m_services.banner.show(std::current_exception(), ErrorBanner::Retry::newChat);
    }
    Q_EMIT changed();
}

// How it ends

void GhostDesk::leave(std::function<void()> then)
{
    if (!holdsMessages())
        return depart(then);
    m_pendingGhostDeparture = GhostDeparture{QUuid::createUuid(), std::move(then)};
    Q_EMIT questionChanged();
}

void GhostDesk::dropGhost()
{
    if (isOn())
        depart([&open = m_services.open] { open.openNew(); });
}

// The Ghost chat goes, and so do its words from the window, also when no other chat can be opened.
void GhostDesk::depart(const std::function<void()> &then)
{
    const auto former = isOn() ? m_services.stores.ghost()->conversation : nullptr;
    retire(true);
    then();
    if (former && m_services.open.current() == former)
        m_services.open.openNew();
    if (former && m_services.open.current() == former)
        m_services.open.close();
}

bool GhostDesk::keepGhost()
{
    if (!isOn())
        return false;
    m_ghostSaveWhenTurnEnds.reset();
    const auto former = m_services.stores.ghost()->conversation;
    if (m_services.isAtWork(*former))
        m_services.endTurns(); // what had arrived is in the record now, and marked as stopped
    std::shared_ptr<Conversation> kept;
    try {
        if (isLocked())
            throw PersistenceError(PersistenceError::Reason::saveFailed);
        kept = m_services.stores.saved().adopt(*former);
    } catch (...) {
        m_services.banner.show(std::current_exception(), ErrorBanner::Retry::keepGhost);
        Q_EMIT changed();
        return false;
    }
    retire(false);
    m_services.open.show(std::move(kept), OpenConversation::Composer::stays);
    return true;
}

void GhostDesk::retire(bool wasDropped)
{
    if (!isOn())
        return;
    m_services.stores.retire(m_services.isAtWork);
    m_ghostSaveWhenTurnEnds.reset();
    m_pendingGhostModeOff.reset();
    m_pendingGhostDeparture.reset();
    Q_EMIT questionChanged();
    Q_EMIT isOnChanged();
    Q_EMIT retired(wasDropped);
    Q_EMIT changed();
}

void GhostDesk::turnEnded()
{
    m_services.stores.release(m_services.isAtWork);
    const GhostChat *ghost = m_services.stores.ghost();
    if (!ghost || !m_ghostSaveWhenTurnEnds || m_services.isAtWork(*ghost->conversation))
        return;
    // A person who was about to leave had nothing else to decide.
    const auto departure = m_pendingGhostDeparture;
    if (keepGhost() && departure)
        departure->then();
}

} // namespace morvane
