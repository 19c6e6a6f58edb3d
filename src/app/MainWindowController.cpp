#include "app/MainWindowController.h"

#include "app/AboutParts.h"
#include "app/GlobalKeys.h"
#include "app/LockedSettings.h"
#include "app/Presentation.h"
#include "app/WindowMemory.h"
#include "persistence/SettingsStore.h"
#include "platform/linux/WindowActivation.h"
#include "view_models/ShellViewModel.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/chat/ReceiptsModel.h"
#include "view_models/chat/SourceMenuViewModel.h"
#include "view_models/companion/CompanionViewModel.h"
#include "view_models/find/FindViewModel.h"
#include "view_models/settings/AISettingsViewModel.h"
#include "view_models/settings/AbilitiesViewModel.h"
#include "view_models/settings/AboutViewModel.h"
#include "view_models/settings/AppLockViewModel.h"
#include "view_models/settings/CalendarsViewModel.h"
#include "view_models/settings/GlobalShortcutViewModel.h"
#include "view_models/settings/InstructionsViewModel.h"
#include "view_models/settings/LocalModelViewModel.h"
#include "view_models/settings/MemoryViewModel.h"
#include "view_models/settings/MicrophoneViewModel.h"
#include "view_models/settings/NearbyViewModel.h"
#include "view_models/settings/NetworkLedgerViewModel.h"
#include "view_models/settings/PrivacyViewModel.h"
#include "view_models/settings/PrivateCloudViewModel.h"
#include "view_models/settings/ProofLedgerViewModel.h"
#include "view_models/settings/RecognitionViewModel.h"
#include "view_models/settings/ScreenTestViewModel.h"
#include "view_models/settings/SearchKeyViewModel.h"
#include "view_models/settings/SettingsModels.h"
#include "view_models/settings/ShortcutListModel.h"
#include "view_models/settings/SpeakingViewModel.h"
#include "view_models/sidebar/ConversationListModel.h"
#include "view_models/sidebar/HistorySearchModel.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QJSValue>

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString mainComponent = u"MainWindow.qml"_s;
const QString contentComponent = u"MainContent.qml"_s;

std::unique_ptr<SettingsModels> modelsOf(const Presentation &presentation)
{
    auto models = std::make_unique<SettingsModels>();
    models->ai = presentation.aiSettings.get();
    models->localModel = presentation.localModel.get();
    models->nearby = presentation.nearby.get();
    models->store = &presentation.settings;
    models->instructions = presentation.instructions.get();
    models->abilities = presentation.abilities.get();
    models->searchKey = presentation.searchKey.get();
    models->calendars = presentation.calendars.get();
    models->shortcuts = presentation.shortcuts.get();
    models->chatKey = presentation.globalKeys.chat.get();
    models->talkKey = presentation.globalKeys.talk.get();
    models->memory = presentation.notes.get();
    models->networkLedger = presentation.networkLedger.get();
    models->proofLedger = presentation.proofLedger.get();
    models->privateCloud = presentation.privateCloud.get();
    models->privacy = presentation.privacy.get();
    models->speaking = presentation.speaking.get();
    models->microphone = presentation.microphone.get();
    models->recognition = presentation.recognition.get();
    models->screenTest = presentation.screenTest.get();
    models->lock = presentation.lock.get();
    models->about = presentation.about.page.get();
    models->shell = presentation.shell.get();
    return models;
}

} // namespace

std::unique_ptr<WindowEngine> MainWindowController::prepareEngine()
{
    auto engine = std::make_unique<WindowEngine>();
    engine->prepare(mainComponent);
    engine->prepare(contentComponent);
    return engine;
}

MainWindowController::MainWindowController(Presentation &presentation, std::unique_ptr<WindowEngine> engine)
    : m_presentation(presentation)
    , m_models(modelsOf(presentation))
    , m_engine(std::move(engine))
{
    m_engine->loadComponent(mainComponent, {{u"shell"_s, QVariant::fromValue(presentation.shell.get())},
                                            {u"settings"_s, QVariant::fromValue(&presentation.settings)},
                                            {u"lock"_s, QVariant::fromValue(presentation.lock.get())},
                                            {u"privacy"_s, QVariant::fromValue(presentation.privacy.get())}});
    if (!m_engine->rootObjects().isEmpty())
        m_window = qobject_cast<QQuickWindow *>(m_engine->rootObjects().constFirst());
    if (!m_window)
        return;
    m_window->installEventFilter(this);
    presentation.memory->follow(*m_window);
    m_place = presentation.memory->place();
    m_lockedSettings = std::make_unique<LockedSettings>(presentation, *m_engine, *m_window);
    connect(presentation.lock.get(), &AppLockViewModel::isLockedChanged, this, [this] {
        if (m_presentation.lock->isLocked())
            return dropContent();
        if (const QString page = m_lockedSettings->leave(); !page.isEmpty())
            m_place.insert(u"settings"_s, page); // they go on in a window that has all of it
        showContent();
    });
    if (!presentation.lock->isLocked())
        showContent();
}

MainWindowController::~MainWindowController()
{
    if (m_content)
        m_place = whereabouts();
    m_presentation.memory->leave(m_place);
    delete m_content; // before the engine that it came from
}

void MainWindowController::showContent()
{
    // The window's own place for it, which popups give the focus back to when they close.
    auto *const place = m_window->property("contentItem").value<QQuickItem *>();
    m_content = m_engine->make(contentComponent, place,
                               {{u"chat"_s, QVariant::fromValue(m_presentation.chat.get())},
                                {u"conversations"_s, QVariant::fromValue(m_presentation.conversations.get())},
                                {u"search"_s, QVariant::fromValue(m_presentation.search.get())},
                                {u"find"_s, QVariant::fromValue(m_presentation.find.get())},
                                {u"sources"_s, QVariant::fromValue(m_presentation.sources.get())},
                                {u"receipts"_s, QVariant::fromValue(m_presentation.receipts.get())},
                                {u"companion"_s, QVariant::fromValue(m_presentation.companion.get())},
                                {u"models"_s, QVariant::fromValue(m_models.get())},
                                {u"place"_s, m_place}});
    if (m_content)
        m_content->setFocus(true);
}

// Gone from sight at once, and from memory when what called for it has returned: that may be an item of it.
void MainWindowController::dropContent()
{
    if (!m_content)
        return;
    m_place = whereabouts();
    m_content->setVisible(false);
    m_content->setParentItem(nullptr);
    // Its scripts' strings go with the next collection, which sees them as free only once it is gone.
    connect(
        m_content, &QObject::destroyed, m_engine.get(),
        [engine = m_engine.get()] { engine->collectGarbage(); }, Qt::QueuedConnection);
    m_content->deleteLater();
    m_content = nullptr;
}

// A Wayland compositor doesn't say that a window is minimised, and lets none come to the front without a
// token of what the person clicked: without one it is shown anew, which brings it there.
bool MainWindowController::needsShowingAnew() const
{
    return QGuiApplication::platformName().startsWith("wayland"_L1) && m_window->isVisible() &&
           !m_window->isActive() && qEnvironmentVariableIsEmpty("XDG_ACTIVATION_TOKEN");
}

QVariantMap MainWindowController::whereabouts() const
{
    QVariant place;
    QMetaObject::invokeMethod(m_content, "whereabouts", Q_RETURN_ARG(QVariant, place));
    return (place.canConvert<QJSValue>() ? place.value<QJSValue>().toVariant() : place).toMap();
}

void MainWindowController::show()
{
    if (!m_window)
        return;
    if (comeBack())
        m_presentation.memory->restore();
    if (needsShowingAnew())
        m_window->hide();
    if (m_window->isVisible() && m_window->windowStates() & Qt::WindowMinimized)
        m_window->setWindowStates(m_window->windowStates() & ~Qt::WindowMinimized);
    else
        m_window->setVisible(true); // show() would take a maximised window its size
    WindowActivation::bringUp(*m_window);
}

bool MainWindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_window || event->type() != QEvent::Close)
        return QObject::eventFilter(watched, event);
    event->ignore();
    m_isHidden = m_isReachable && m_isReachable();
    if (!m_isHidden) {
        m_window->setWindowStates(m_window->windowStates() | Qt::WindowMinimized);
        return true;
    }
    m_presentation.memory->noteFrame();
    m_window->hide();
    // A cursor that nobody sees would blink on where the display keeps the focus.
    if (m_content)
        m_content->setFocus(false);
    return true;
}

bool MainWindowController::comeBack()
{
    if (!std::exchange(m_isHidden, false))
        return false;
    if (m_content)
        m_content->setFocus(true);
    return true;
}

void MainWindowController::comeMinimised()
{
    if (comeBack())
        m_window->showMinimized();
}

} // namespace morvane
