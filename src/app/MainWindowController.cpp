#include "app/MainWindowController.h"

#include "app/Presentation.h"
#include "persistence/SettingsStore.h"
#include "view_models/ShellViewModel.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/chat/ReceiptsModel.h"
#include "view_models/companion/CompanionViewModel.h"
#include "view_models/find/FindViewModel.h"
#include "view_models/settings/AISettingsViewModel.h"
#include "view_models/settings/AbilitiesViewModel.h"
#include "view_models/settings/CalendarsViewModel.h"
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
#include "view_models/settings/ShortcutListModel.h"
#include "view_models/settings/SpeakingViewModel.h"
#include "view_models/sidebar/ConversationListModel.h"
#include "view_models/sidebar/HistorySearchModel.h"
#include "view_models/sidebar/SourceMenuViewModel.h"

#include <QCloseEvent>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString mainComponent = u"Main.qml"_s;

} // namespace

std::unique_ptr<WindowEngine> MainWindowController::prepareEngine()
{
    auto engine = std::make_unique<WindowEngine>();
    engine->prepare(mainComponent);
    return engine;
}

MainWindowController::MainWindowController(Presentation &presentation, std::unique_ptr<WindowEngine> engine)
    : m_engine(std::move(engine))
{
    m_engine->loadComponent(mainComponent,
                            {{u"chat"_s, QVariant::fromValue(presentation.chat.get())},
                             {u"conversations"_s, QVariant::fromValue(presentation.conversations.get())},
                             {u"search"_s, QVariant::fromValue(presentation.search.get())},
                             {u"find"_s, QVariant::fromValue(presentation.find.get())},
                             {u"sources"_s, QVariant::fromValue(presentation.sources.get())},
                             {u"instructions"_s, QVariant::fromValue(presentation.instructions.get())},
                             {u"abilities"_s, QVariant::fromValue(presentation.abilities.get())},
                             {u"searchKey"_s, QVariant::fromValue(presentation.searchKey.get())},
                             {u"calendars"_s, QVariant::fromValue(presentation.calendars.get())},
                             {u"shortcuts"_s, QVariant::fromValue(presentation.shortcuts.get())},
                             {u"memory"_s, QVariant::fromValue(presentation.notes.get())},
                             {u"receipts"_s, QVariant::fromValue(presentation.receipts.get())},
                             {u"aiSettings"_s, QVariant::fromValue(presentation.aiSettings.get())},
                             {u"localModel"_s, QVariant::fromValue(presentation.localModel.get())},
                             {u"nearby"_s, QVariant::fromValue(presentation.nearby.get())},
                             {u"settings"_s, QVariant::fromValue(&presentation.settings)},
                             {u"networkLedger"_s, QVariant::fromValue(presentation.networkLedger.get())},
                             {u"proofLedger"_s, QVariant::fromValue(presentation.proofLedger.get())},
                             {u"privateCloud"_s, QVariant::fromValue(presentation.privateCloud.get())},
                             {u"privacy"_s, QVariant::fromValue(presentation.privacy.get())},
                             {u"speaking"_s, QVariant::fromValue(presentation.speaking.get())},
                             {u"microphone"_s, QVariant::fromValue(presentation.microphone.get())},
                             {u"recognition"_s, QVariant::fromValue(presentation.recognition.get())},
                             {u"screenTest"_s, QVariant::fromValue(presentation.screenTest.get())},
                             {u"shell"_s, QVariant::fromValue(presentation.shell.get())},
                             {u"companion"_s, QVariant::fromValue(presentation.companion.get())}});
    if (!m_engine->rootObjects().isEmpty())
        m_window = qobject_cast<QQuickWindow *>(m_engine->rootObjects().constFirst());
    if (!m_window)
        return;
    m_window->installEventFilter(this);
}

void MainWindowController::show()
{
    if (!m_window)
        return;
    if (m_window->windowStates() & Qt::WindowMinimized)
        m_window->setWindowStates(m_window->windowStates() & ~Qt::WindowMinimized);
    else
        m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

bool MainWindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_window || event->type() != QEvent::Close)
        return QObject::eventFilter(watched, event);
    event->ignore();
    m_window->showMinimized();
    return true;
}

} // namespace morvane
