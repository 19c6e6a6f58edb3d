#include "app/Launch.h"

#include "ai/local/LocalModelService.h"
#include "app/AppDelegate.h"
#include "app/AppState.h"
#include "app/DemoPlayer.h"
#include "app/DesktopServices.h"
#include "app/Erasure.h"
#include "app/MainWindowController.h"
#include "app/PracticeTour.h"
#include "app/PrivateCloudParts.h"
#include "app/StartupWindow.h"
#include "app/Tray.h"
#include "async/CancelledError.h"
#include "persistence/SealedData.h"
#include "persistence/SettingsStore.h"
#include "platform/linux/PolkitPresence.h"
#include "platform/linux/WebBrowser.h"
#include "platform/linux/WindowActivation.h"
#include "security/TestHost.h"
#include "utils/files/PrivateFile.h"
#include "utils/log/Log.h"
#include "utils/text/Identifier.h"
#include "utils/text/Product.h"
#include "view_models/ShellViewModel.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/settings/PrivacyViewModel.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>

#include <cstdio>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// An answer within this time needs no words.
constexpr auto silentWait = 300ms;

// A trial profile must never read or change the person's own keyring.
std::unique_ptr<SecretStoring> keyringOf(const CommandLine &commandLine)
{
    if (commandLine.profile)
        return std::make_unique<AbsentKeyring>();
    return SecretKeeping::keyringOfThePerson();
}

Host hostOfThisRun()
{
    return TestHost::isActive() ? Host::test : Host::application;
}

KeyExpectation expectationOf(const SupportFolders &folders)
{
    return SealedData::exists(folders) ? KeyExpectation::MustExist : KeyExpectation::Unknown;
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

Launch::Launch(QGuiApplication &application, CommandLine commandLine, std::unique_ptr<SecretStoring> keyring,
               QObject *parent)
    : QObject(parent)
    , m_application(application)
    , m_commandLine(std::move(commandLine))
    , m_secrets(m_commandLine.folders(), keyring ? std::move(keyring) : keyringOf(m_commandLine), m_work,
                std::make_unique<PolkitPresence>())
    , m_desktop(std::make_unique<DesktopServices>(m_commandLine, m_clock, m_work))
    , m_isWindowWanted(m_commandLine.request.showsWindow)
{
    m_requests.take(m_commandLine.request);
    connect(&m_secrets.preparation(), &KeychainPreparation::stateChanged, this, &Launch::keychainChanged);
    connect(&m_desktop->notifications, &NotificationService::chosen, this, [this](const QUuid &chat) {
        take({.chatID = chat.isNull() ? QString() : Identifier::text(chat)});
    });
}

// What still runs beside the GUI thread may use the secrets, also when there is no AppState yet that would
// end it.
Launch::~Launch()
{
    m_work.end();
}

void Launch::start()
{
    if (Erasure::isUnderway(m_commandLine.folders()))
        endErasure();
    else
        begin(Way::usual);
    // The keychain opens on a thread of its own, and the window's components hold nothing of the person's.
    if (!m_windowEngine && m_isWindowWanted)
        m_windowEngine = MainWindowController::prepareEngine();
}

void Launch::begin(Way way)
{
    if (m_isWindowWanted)
        m_patience = m_clock.after(silentWait, [this] { showWaiting(u"Opening your chats…"_s, {}); });
    m_opening = TaskHandle::start(
        [this, way](std::stop_token stop) { return openKeychain(QPointer(this), way, std::move(stop)); });
}

QCoro::Task<> Launch::openKeychain(QPointer<Launch> self, Way way, std::stop_token stop)
{
    try {
        const KeychainOpening opening = co_await openOn(self, way, stop);
        if (!self || !isReady(opening.state))
            co_return;
        self->m_opened = opening;
        self->finish();
    } catch (const CancelledError &) {
        co_return;
    } catch (const FileError &error) {
        if (self)
            self->showWaiting(
                u"Your old data could not be moved (%1); what is not in “%2” is unchanged."_s.arg(
                    QString::fromLocal8Bit(error.what()), self->m_folderAside),
                {.retry = true});
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s could not start: %s\n", Product::name.data(), error.what());
        QCoreApplication::exit(1);
    }
}

QCoro::Task<KeychainOpening> Launch::openOn(QPointer<Launch> self, Way way, std::stop_token stop)
{
    if (way == Way::afresh)
        return openAfresh(self, std::move(stop));
    self->m_expectation = expectationOf(self->m_commandLine.folders());
    auto &preparation = self->m_secrets.preparation();
    if (way == Way::keyFile && self->m_expectation == KeyExpectation::Unknown)
        return preparation.prepareInFile(std::move(stop));
    return preparation.prepare(self->m_expectation, std::move(stop));
}

// A broken key file goes aside first: a keyring may have the key, and then all the data stays in use. A new
// key is made once the data is aside for good.
QCoro::Task<KeychainOpening> Launch::openAfresh(QPointer<Launch> self, std::stop_token stop)
{
    const SupportFolders folders = self->m_commandLine.folders();
    if (self->m_secrets.preparation().state() == KeychainState::FileUnreadable) {
        const QString keyFile = SecretKeeping::keyFilePath(folders);
        if (QFileInfo::exists(keyFile))
            PrivateFile::move(keyFile, self->m_folderAside + u"/keychain.keys"_s);
        const KeychainOpening opening =
            co_await self->m_secrets.preparation().prepare(self->m_expectation, stop);
        if (!self || isReady(opening.state))
            co_return opening;
    }
    SealedData::setAside(folders, self->m_folderAside);
    self->m_isDataAside = true;
    self->m_expectation = KeyExpectation::Unknown;
    const KeychainOpening opening =
        co_await self->m_secrets.preparation().prepare(KeyExpectation::Unknown, stop);
    co_return opening;
}

void Launch::keychainChanged(KeychainState state)
{
    if (state != KeychainState::Opening && !isReady(state))
        showWaiting(sentenceFor(state, m_expectation), waysOn(state));
}

StartupViewModel::Ways Launch::waysOn(KeychainState state)
{
    StartupViewModel::Ways ways{.retry = canRetry(state),
                                .useFile = canUseFile(state, m_expectation),
                                .startAfresh = canStartAfresh(state, m_expectation)};
    if (!ways.startAfresh)
        return ways;
    if (!hasPutAside()) // what is left goes to the same place
        m_folderAside = SealedData::folderAside(m_commandLine.folders(), m_clock.now().toLocalTime());
    ways.startAfreshQuestion =
        u"%1 starts empty. Your chats, notes and instructions move to “%2”. Nothing is deleted, but only the "
        u"key that sealed them can open them again."_s.arg(Product::name,
                                                           QDir::toNativeSeparators(m_folderAside));
    return ways;
}

void Launch::showWaiting(const QString &sentence, const StartupViewModel::Ways &ways)
{
    m_patience.reset();
    if (m_state)
        return;
    if (!m_startupWindow) {
        m_startupWindow = std::make_unique<StartupWindow>(m_desktop->appearance.look().isDark);
        connect(m_startupWindow.get(), &StartupWindow::retryChosen, this, &Launch::start);
        connect(m_startupWindow.get(), &StartupWindow::fileChosen, this, [this] { begin(Way::keyFile); });
        connect(m_startupWindow.get(), &StartupWindow::afreshChosen, this, [this] { begin(Way::afresh); });
        connect(m_startupWindow.get(), &StartupWindow::proceedChosen, this, &Launch::start);
        connect(m_startupWindow.get(), &StartupWindow::quitChosen, this, &AppDelegate::end);
    }
    m_startupWindow->show(sentence, ways);
}

void Launch::finish()
{
    m_patience.reset();
    m_state = std::make_unique<AppState>(
        m_commandLine, hostOfThisRun(), m_clock,
        Secrets{m_secrets.keychain(), m_secrets.keychain(), m_opened.dataKeyBehindPresence,
                m_opened.dataKeyWrapped},
        m_work, &m_desktop->notifications, m_desktop->voicePorts(), m_desktop->ports(),
        LockPorts{&m_secrets.presence(), &m_desktop->session}, m_desktop->globalShortcuts.get());
    if (m_commandLine.practiceServer)
        usePracticeServer(*m_state->storage().settings, *m_commandLine.practiceServer);
    if (m_commandLine.practiceServer && m_commandLine.practiceTour)
        PracticeTour::begin(m_state->storage(), m_state->presentation());
    connectDesktop();
    if (const auto record = std::exchange(m_runtimeRecord, std::nullopt))
        m_state->assistant().localModel->keepRuntimeRecord(*record);

    connect(m_state->presentation().privacy.get(), &PrivacyViewModel::erasureConfirmed, this,
            &Launch::eraseAll,
            Qt::QueuedConnection); // the window that says so goes with it
    connect(m_state.get(), &AppState::windowNeeded, this, &Launch::makeWindow);
    connect(m_state.get(), &AppState::mainWindowRequested, this, &Launch::showWindow);
    m_delegate = std::make_unique<AppDelegate>(m_application, *m_state);
    m_delegate->didFinishLaunching(m_isWindowWanted ? AppState::FirstWindow::now
                                                    : AppState::FirstWindow::whenAsked);
    m_startupWindow.reset();
    showTray();
    tellWhatIsAside();
    m_requests.serve(*m_state);
    if (m_commandLine.demoPicture)
        playDemo();
}

// With what is open now; an erasure opens another.
void Launch::connectDesktop()
{
    ShellViewModel &shell = *m_state->presentation().shell;
    shell.setKeychainNotice(sentenceFor(m_secrets.preparation().state()));
    shell.setDesktopLook(m_desktop->appearance.look());
    connect(&m_desktop->appearance, &DesktopAppearance::changed, &shell, &ShellViewModel::setDesktopLook);
    connect(&shell, &ShellViewModel::linkRequested, this, &WebBrowser::open);
}

// Not before somebody wants to see it: a program that was started to the tray does without.
void Launch::makeWindow()
{
    if (m_mainWindow)
        return;
    if (!m_windowEngine)
        m_windowEngine = MainWindowController::prepareEngine();
    m_mainWindow = std::make_unique<MainWindowController>(m_state->presentation(), std::move(m_windowEngine));
    if (!m_mainWindow->window())
        return QCoreApplication::exit(1);
    connect(&m_mainWindow->engine(), &QQmlEngine::quit, m_delegate.get(), &AppDelegate::requestQuit);
    m_mainWindow->setReachable([this] { return m_desktop->trayIcon.isDrawn(); });
}

void Launch::showTray()
{
    m_tray = std::make_unique<Tray>(m_state->presentation(), m_desktop->trayIcon, m_clock);
    connect(m_tray.get(), &Tray::asked, this, &Launch::take);
    connect(m_tray.get(), &Tray::quitAsked, m_delegate.get(), &AppDelegate::requestQuit);
    connect(m_tray.get(), &Tray::lost, this, &Launch::comeMinimised);
}

void Launch::comeMinimised()
{
    const bool isNew = !m_mainWindow;
    makeWindow();
    if (isNew)
        m_mainWindow->window()->showMinimized();
    else
        m_mainWindow->comeMinimised();
}

void Launch::showWindow()
{
    makeWindow();
    m_mainWindow->show();
}

// Everything that holds something of the person's goes, and the program begins as for the first time.
void Launch::eraseAll()
{
    m_isWindowWanted = true;
    Erasure::begin(*m_state->storage().defaults);
    m_runtimeRecord = m_state->assistant().localModel->runtimeRecord();
    m_state->deleteRecords();
    if (m_desktop->login)
        static_cast<void>(m_desktop->login->set(false));
    m_requests.leave();
    m_demo.reset();
    m_tray.reset();
    m_delegate.reset();
    m_mainWindow.reset();
    m_state.reset();
    m_work.resume();
    endErasure();
}

void Launch::endErasure()
{
    showWaiting(u"Deleting all local data…"_s, {});
    m_opening =
        TaskHandle::start([this](std::stop_token stop) { return erase(QPointer(this), std::move(stop)); });
}

QCoro::Task<> Launch::erase(QPointer<Launch> self, std::stop_token stop)
{
    const SupportFolders folders = self->m_commandLine.folders();
    KeychainService &keychain = self->m_secrets.keychain();
    const auto removeFiles = [folders] { return Erasure::removeFiles(folders); };
    const auto removeSecrets = [&keychain, keyFile = SecretKeeping::keyFilePath(folders)] {
        return Erasure::removeSecrets(keychain, keyFile);
    };
    Erasure::Result result;
    try {
        result.files = co_await self->m_work.run(removeFiles, stop);
        auto &preparation = self->m_secrets.preparation();
        if (!isReady(preparation.state())) { // at a start that ends what a killed program began
            self->m_expectation = KeyExpectation::Unknown;
            const KeychainOpening opening = co_await preparation.prepare(KeyExpectation::Unknown, stop);
            if (!isReady(opening.state))
                co_return; // the window says why, and what can be done
        }
        result.secrets = co_await self->m_work.run(removeSecrets, stop);
    } catch (const CancelledError &) {
        co_return;
    }
    result.settingsLeft = Erasure::emptySettings(folders);
    Log::info(Log::Category::App, "Deleted all local data at user request: %ld stores, %ld stored secrets"_L1,
              {result.files.count, result.secrets.count});
    self->showWaiting(
        u"All local data was deleted"_s,
        {.proceed = true, .report = Erasure::report(result, self->m_desktop->hands.shortcuts.folder())});
}

bool Launch::hasPutAside() const
{
    return !m_folderAside.isEmpty() && QFileInfo::exists(m_folderAside);
}

void Launch::tellWhatIsAside()
{
    if (!hasPutAside())
        return;
    m_state->presentation().shell->ask(
        m_isDataAside ? u"Your old data was set aside"_s : u"The broken key file was set aside"_s,
        u"Nothing was deleted. It is in “%1”."_s.arg(m_folderAside), {u"Continue"_s}, {});
}

void Launch::playDemo()
{
    makeWindow();
    m_demo =
        std::make_unique<DemoPlayer>(*m_mainWindow->window(), *m_state->presentation().chat,
                                     *m_state->assistant().privateCloud->watch, *m_commandLine.demoPicture);
    connect(m_demo.get(), &DemoPlayer::finished, &m_application, &QCoreApplication::exit,
            Qt::QueuedConnection);
    m_demo->play();
}

void Launch::take(const AppRequest &request)
{
    if (request.showsWindow) {
        WindowActivation::offer(request.activationToken);
        m_isWindowWanted = true;
        if (m_state)
            m_state->reopen();
        else if (m_startupWindow)
            m_startupWindow->raise();
    }
    m_requests.take(request);
}

} // namespace morvane
