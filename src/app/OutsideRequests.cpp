#include "app/OutsideRequests.h"

#include "app/AppState.h"
#include "persistence/SettingsStore.h"
#include "utils/log/Log.h"
#include "view_models/chat/ChatViewModel.h"

#include <QUrl>

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

void OutsideRequests::take(const AppRequest &request)
{
    if (m_waiting.size() >= most) {
        Log::info(Log::Category::App, "Dropped a request from outside: %ld wait already"_L1,
                  {static_cast<qint64>(m_waiting.size())});
        return;
    }
    m_waiting.push_back(request);
    carryOutAll();
}

void OutsideRequests::serve(AppState &state)
{
    m_state = &state;
    connect(&state.appLock(), &AppLockService::isLockedChanged, this, &OutsideRequests::carryOutAll);
    carryOutAll();
}

void OutsideRequests::leave()
{
    m_state = nullptr;
    m_fileWait.reset();
    m_waiting.clear();
}

void OutsideRequests::carryOutAll()
{
    while (m_state && !m_state->appLock().isLocked() && !m_waiting.empty()) {
        const AppRequest request = std::move(m_waiting.front());
        m_waiting.pop_front();
        carryOut(request);
    }
}

// A Ghost chat that holds messages is asked about first, and what was asked for waits for the answer.
void OutsideRequests::carryOut(const AppRequest &request)
{
    ChatViewModel &chat = *m_state->presentation().chat;
    const auto go = [self = QPointer(this), request, &chat] {
        if (request.chat == AppRequest::Chat::fresh)
            chat.newConversation();
        else
            chat.ghosts()->newGhostChat();
        if (self)
            self->fill(request);
    };
    if (!request.chatID.isEmpty())
        chat.open(request.chatID);
    else if (request.chat == AppRequest::Chat::open)
        fill(request);
    else if (chat.ghosts()->holdsMessages())
        chat.ghosts()->leave(go);
    else
        go();
}

void OutsideRequests::fill(const AppRequest &request)
{
    if (!m_state)
        return;
    ChatViewModel &chat = *m_state->presentation().chat;
    QList<QUrl> addresses;
    for (const QString &path : request.files)
        addresses += QUrl::fromLocalFile(path);
    if (!addresses.isEmpty())
        chat.entries()->attachments()->attach(addresses);
    if (request.looksAtScreen)
        chat.entries()->glanceAtScreen(false);
    if (request.words.isEmpty())
        return;
    const bool isAlone = chat.draft().isEmpty(); // what the person was writing is theirs to send
    chat.addToDraft(request.words);
    if (!request.sends || !isAlone || !m_state->presentation().settings.onboardingComplete())
        return;
    if (request.files.isEmpty())
        chat.send();
    else
        sendWithFile(chat);
}

// Once the file is read; never without it, and not when the person changed the words or the chat meanwhile.
void OutsideRequests::sendWithFile(ChatViewModel &chat)
{
    m_fileWait = std::make_unique<QObject>();
    const auto look = [this, waiting = m_fileWait.get(), &chat, id = chat.conversationId(),
                       words = chat.draft()] {
        const auto state = chat.entries()->attachments()->state();
        if (m_fileWait.get() != waiting || state == AttachmentDesk::State::Reading)
            return;
        m_fileWait.release()->deleteLater(); // it is what calls this
        const bool isRead = state == AttachmentDesk::State::Ready || state == AttachmentDesk::State::Cut;
        if (isRead && chat.conversationId() == id && chat.draft() == words)
            chat.send();
    };
    // Queued, since sending takes the attachment away.
    connect(chat.entries()->attachments(), &AttachmentDesk::changed, m_fileWait.get(), look,
            Qt::QueuedConnection);
    QMetaObject::invokeMethod(m_fileWait.get(), look, Qt::QueuedConnection); // it may have failed at once
}

} // namespace morvane
