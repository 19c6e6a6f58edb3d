#include "app/LockedSettings.h"

#include "app/AboutParts.h"
#include "app/GlobalKeys.h"
#include "app/Presentation.h"
#include "app/WindowEngine.h"
#include "persistence/SettingsStore.h"
#include "platform/linux/WindowActivation.h"
#include "view_models/ShellViewModel.h"
#include "view_models/settings/AboutViewModel.h"
#include "view_models/settings/AppLockViewModel.h"
#include "view_models/settings/GlobalShortcutViewModel.h"
#include "view_models/settings/MicrophoneViewModel.h"
#include "view_models/settings/PrivacyViewModel.h"
#include "view_models/settings/RecognitionViewModel.h"
#include "view_models/settings/SpeakingViewModel.h"

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

LockedSettings::LockedSettings(Presentation &presentation, WindowEngine &engine, QWindow &mainWindow)
    : m_presentation(presentation)
    , m_engine(engine)
    , m_mainWindow(mainWindow)
{
    connect(presentation.shell.get(), &ShellViewModel::settingsRequested, this, [this] { open(); });
    connect(presentation.about.page.get(), &AboutViewModel::pageRequested, this,
            [this] { open(u"about"_s); });
}

LockedSettings::~LockedSettings()
{
    delete m_window;
}

QString LockedSettings::leave()
{
    if (!m_window)
        return {};
    const QString page = m_window->isVisible() ? m_window->property("page").toString() : QString();
    QQuickWindow *const window = std::exchange(m_window, nullptr);
    disconnect(window, nullptr, this, nullptr);
    window->hide();
    window->deleteLater();
    return page;
}

void LockedSettings::open(const QString &page)
{
    if (!m_presentation.lock->isLocked() || !make())
        return; // the unlocked window has its own
    if (!page.isEmpty())
        m_window->setProperty("page", page);
    m_window->show();
    WindowActivation::bringUp(*m_window);
}

bool LockedSettings::make()
{
    if (m_window)
        return true;
    m_window = m_engine.makeWindow(u"settings/LockedSettings.qml"_s,
                                   {{u"shell"_s, QVariant::fromValue(m_presentation.shell.get())},
                                    {u"settings"_s, QVariant::fromValue(&m_presentation.settings)},
                                    {u"chatKey"_s, QVariant::fromValue(m_presentation.globalKeys.chat.get())},
                                    {u"talkKey"_s, QVariant::fromValue(m_presentation.globalKeys.talk.get())},
                                    {u"privacy"_s, QVariant::fromValue(m_presentation.privacy.get())},
                                    {u"speaking"_s, QVariant::fromValue(m_presentation.speaking.get())},
                                    {u"microphone"_s, QVariant::fromValue(m_presentation.microphone.get())},
                                    {u"recognition"_s, QVariant::fromValue(m_presentation.recognition.get())},
                                    {u"about"_s, QVariant::fromValue(m_presentation.about.page.get())}});
    if (!m_window)
        return false;
    connect(m_window, SIGNAL(left()), this, SLOT(mainWindowIsBack()));
    return true;
}

void LockedSettings::mainWindowIsBack()
{
    m_mainWindow.requestActivate();
}

} // namespace morvane
