#include "app/Launch.h"

#include "app/AppDelegate.h"
#include "app/AppState.h"
#include "app/DemoPlayer.h"
#include "app/MainWindowController.h"
#include "app/StartupWindow.h"
#include "persistence/ChatStoreLocation.h"
#include "persistence/SettingsStore.h"
#include "platform/linux/DesktopAppearance.h"
#include "platform/linux/DesktopNotifications.h"
#include "platform/linux/WebBrowser.h"
#include "security/TestHost.h"
#include "utils/text/Identifier.h"
#include "utils/text/Product.h"
#include "view_models/ShellViewModel.h"
#include "view_models/chat/ChatViewModel.h"

#include <QFileInfo>
#include <QGuiApplication>

#include <cstdio>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// An answer within this time needs no words.
constexpr auto silentWait = 300ms;

SecretKeeping::Keyring keyringOf(const CommandLine &commandLine)
{
    return commandLine.profile ? SecretKeeping::Keyring::none : SecretKeeping::Keyring::ofThePerson;
}

Host hostOfThisRun()
{
    return TestHost::isActive() ? Host::test : Host::application;
}

KeyExpectation expectationOf(const SupportFolders &folders)
{
    return QFileInfo::exists(ChatStoreLocation::storePath(folders)) ? KeyExpectation::MustExist
                                                                    : KeyExpectation::Unknown;
}

// A practice profile starts out pointing at its server.
void usePracticeServer(SettingsStore &settings, const QString &address)
{
    settings.setBaseURLString(address);
    settings.setModel(u"practice"_s);
    settings.setProviderName(u"Practice server"_s);
    settings.setHostedChatEnabled(false);
}

} // namespace

Launch::Launch(QGuiApplication &application, CommandLine commandLine, QObject *parent)
    : QObject(parent)
    , m_application(application)
    , m_commandLine(std::move(commandLine))
    , m_secrets(m_commandLine.folders(), keyringOf(m_commandLine), m_work)
    , m_appearance(std::make_unique<DesktopAppearance>())
    , m_notifications(std::make_unique<DesktopNotifications>())
{
    connect(&m_secrets.preparation(), &KeychainPreparation::stateChanged, this, &Launch::keychainChanged);
}

// What still runs beside the GUI thread may use the secrets, also when there is no AppState yet that would
// end it.
Launch::~Launch()
{
    m_work.end();
}

void Launch::start()
{
    m_patience = m_clock.after(silentWait, [this] { showWaiting(u"Opening your chats…"_s, false); });
    m_opening = TaskHandle::start(
        [this](std::stop_token stop) { return openKeychain(QPointer(this), std::move(stop)); });
    // The keychain opens on a thread of its own, and the window's components hold nothing of the person's.
    if (!m_windowEngine)
        m_windowEngine = MainWindowController::prepareEngine();
}

QCoro::Task<> Launch::openKeychain(QPointer<Launch> self, std::stop_token stop)
{
    const auto expectation = expectationOf(self->m_commandLine.folders());
    const KeychainOpening opening = co_await self->m_secrets.preparation().prepare(expectation, stop);
    if (!self || !isReady(opening.state))
        co_return;
    try {
        self->finish();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s could not start: %s\n", Product::name.data(), error.what());
        QCoreApplication::exit(1);
    }
}

void Launch::keychainChanged(KeychainState state)
{
    if (state != KeychainState::Opening && !isReady(state))
        showWaiting(sentenceFor(state), canRetry(state));
}

void Launch::showWaiting(const QString &sentence, bool retryMayHelp)
{
    m_patience.reset();
    if (m_state)
        return;
    if (!m_startupWindow) {
        m_startupWindow = std::make_unique<StartupWindow>(m_appearance->isDark());
        connect(m_startupWindow.get(), &StartupWindow::retryChosen, this, &Launch::start);
        connect(m_startupWindow.get(), &StartupWindow::quitChosen, this, &AppDelegate::end);
    }
    m_startupWindow->show(sentence, retryMayHelp);
}

void Launch::finish()
{
    m_patience.reset();
    m_state = std::make_unique<AppState>(m_commandLine, hostOfThisRun(), m_clock,
                                         Secrets{m_secrets.keychain(), m_secrets.keychain()}, m_work,
                                         m_notifications.get());
    if (m_commandLine.practiceServer)
        usePracticeServer(*m_state->storage().settings, *m_commandLine.practiceServer);
    ShellViewModel &shell = *m_state->presentation().shell;
    shell.setKeychainNotice(sentenceFor(m_secrets.preparation().state()));
    shell.setSystemDark(m_appearance->isDark());
    connect(m_appearance.get(), &DesktopAppearance::darkChanged, &shell, &ShellViewModel::setSystemDark);
    connect(&shell, &ShellViewModel::linkRequested, this, &WebBrowser::open);
    connect(m_notifications.get(), &DesktopNotifications::chosen, this, &Launch::open);

    if (!m_windowEngine)
        m_windowEngine = MainWindowController::prepareEngine();
    m_mainWindow = std::make_unique<MainWindowController>(m_state->presentation(), std::move(m_windowEngine));
    if (!m_mainWindow->window())
        return QCoreApplication::exit(1);
    connect(m_state.get(), &AppState::mainWindowRequested, m_mainWindow.get(), &MainWindowController::show);
    m_delegate = std::make_unique<AppDelegate>(m_application, *m_state);
    connect(&m_mainWindow->engine(), &QQmlEngine::quit, m_delegate.get(), &AppDelegate::requestQuit);
    m_delegate->didFinishLaunching();
    m_startupWindow.reset();
    if (m_commandLine.demoPicture)
        playDemo();
}

void Launch::open(const QUuid &conversation)
{
    if (!conversation.isNull())
        m_state->presentation().chat->open(Identifier::text(conversation));
    m_state->reopen();
}

void Launch::playDemo()
{
    m_demo = std::make_unique<DemoPlayer>(*m_mainWindow->window(), *m_state->presentation().chat,
                                          *m_commandLine.demoPicture);
    connect(m_demo.get(), &DemoPlayer::finished, &m_application, &QCoreApplication::exit,
            Qt::QueuedConnection);
    m_demo->play();
}

void Launch::show()
{
    if (m_state)
        m_state->reopen();
    else if (m_startupWindow)
        m_startupWindow->raise();
}

} // namespace morvane
