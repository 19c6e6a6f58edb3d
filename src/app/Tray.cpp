#include "app/Tray.h"

#include "app/Presentation.h"
#include "async/Clock.h"
#include "persistence/SettingsStore.h"
#include "utils/text/Product.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/settings/AppLockViewModel.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString wordsOf(TrayState state)
{
    switch (state) {
    case TrayState::idle:
        return {};
    case TrayState::replying:
        return u"Replying…"_s;
    case TrayState::asking:
        return u"Waits for your answer"_s;
    case TrayState::locked:
        return u"Locked"_s;
    }
    return {};
}

} // namespace

Tray::Tray(const Presentation &presentation, TrayIcon &icon, Clock &clock)
    : m_presentation(presentation)
    , m_icon(icon)
    , m_clock(clock)
{
    connect(&presentation.settings, &SettingsStore::showMenuBarIconChanged, this, &Tray::update);
    connect(presentation.chat.get(), &ChatViewModel::isRespondingChanged, this, &Tray::update);
    connect(presentation.chat.get(), &ChatViewModel::approvalChanged, this, &Tray::update);
    connect(presentation.lock.get(), &AppLockViewModel::isLockedChanged, this, &Tray::update);
    connect(presentation.lock.get(), &AppLockViewModel::changed, this, &Tray::update);
    connect(&icon, &TrayIcon::chosen, this, &Tray::carryOut);
    connect(&icon, &TrayIcon::isDrawnChanged, this, &Tray::followPanel);
    update();
    followPanel();
}

Tray::~Tray()
{
    m_icon.hide();
}

void Tray::update()
{
    if (m_presentation.settings.showMenuBarIcon())
        m_icon.show(face());
    else
        m_icon.hide();
}

void Tray::followPanel()
{
    m_absence.reset();
    if (!m_icon.isDrawn())
        m_absence = m_clock.after(std::chrono::seconds(patience), [this] { Q_EMIT lost(); });
}

TrayFace Tray::face() const
{
    const ChatViewModel &chat = *m_presentation.chat;
    const AppLockViewModel &lock = *m_presentation.lock;
    const TrayState state = lock.isLocked()       ? TrayState::locked
                            : chat.hasApproval()  ? TrayState::asking
                            : chat.isResponding() ? TrayState::replying
                                                  : TrayState::idle;
    TrayFace face{state, wordsOf(state), {{TrayCommand::show, u"Show %1"_s.arg(Product::name)}}};
    if (state == TrayState::locked) {
        face.menu.push_back({TrayCommand::unlock, u"Unlock…"_s});
    } else {
        face.menu.push_back({TrayCommand::newChat, u"New Chat"_s, true});
        face.menu.push_back({TrayCommand::newGhostChat, u"New Ghost Chat"_s});
        if (m_presentation.chat->entries()->offersScreen())
            face.menu.push_back({TrayCommand::lookAtScreen, u"Look at My Screen"_s});
        if (lock.isEnabled())
            face.menu.push_back({TrayCommand::lock, u"Lock"_s, true});
    }
    face.menu.push_back({TrayCommand::quit, u"Quit"_s, true});
    return face;
}

void Tray::carryOut(TrayCommand command)
{
    switch (command) {
    case TrayCommand::show:
        Q_EMIT asked({});
        return;
    case TrayCommand::newChat:
        Q_EMIT asked({.chat = AppRequest::Chat::fresh});
        return;
    case TrayCommand::newGhostChat:
        Q_EMIT asked({.chat = AppRequest::Chat::ghost});
        return;
    case TrayCommand::lookAtScreen:
        Q_EMIT asked({.looksAtScreen = true});
        return;
    case TrayCommand::lock:
        m_presentation.lock->lock();
        return;
    case TrayCommand::unlock:
        Q_EMIT asked({});
        m_presentation.lock->unlock();
        return;
    case TrayCommand::quit:
        Q_EMIT quitAsked();
        return;
    }
}

} // namespace morvane
