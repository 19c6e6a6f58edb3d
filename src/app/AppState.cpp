#include "app/AppState.h"

#include "ai/local/LocalModelService.h"
#include "ai/prompts/SystemPromptStore.h"
#include "ai/tools/ToolRegistry.h"
#include "app/WhatChangedNotice.h"
#include "async/Work.h"
#include "audio/SpeechRecognitionService.h"
#include "audio/TextToSpeechService.h"
#include "memory/MemoryStore.h"
#include "persistence/ConversationRepository.h"
#include "persistence/SettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "security/LocalDataVault.h"
#include "services/GlobalShortcutService.h"
#include "utils/log/Log.h"
#include "view_models/ShellViewModel.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/chat/ReplyPorts.h"
#include "view_models/sidebar/ConversationListModel.h"

namespace morvane {

using namespace Qt::StringLiterals;

AppState::AppState(const CommandLine &commandLine, Host host, Clock &clock, const Secrets &secrets,
                   Work &work, ReplyNotifying *notifications, const VoicePorts &voice,
                   const DesktopPorts &desktop, const LockPorts &lock, GlobalShortcutBinding *keys,
                   QObject *parent)
    : QObject(parent)
    , m_host(host)
    , m_work(work)
    , m_notifications(notifications)
    , m_storage(commandLine, host, clock, secrets)
    , m_assistant(commandLine, m_storage, secrets, desktop, clock, work)
    , m_voice(voice, m_storage, m_assistant, clock, work)
    , m_lock(lock, m_storage, m_voice, secrets, clock, work)
    , m_about(m_storage, work)
    , m_globalKeys(keys, m_storage)
    , m_presentation(m_storage, m_assistant, m_voice, m_lock, m_about, m_globalKeys, secrets, clock, work,
                     notifications)
    , m_sealingWatch(m_storage, *m_presentation.shell, clock, work)
    , m_storeNotices(m_storage, *m_presentation.shell, work)
{
    connect(&m_storeNotices, &StoreNotices::quitChosen, this, [this] {
        if (shouldTerminate() == Termination::now)
            Q_EMIT quitConfirmed();
    });
    connect(m_presentation.shell.get(), &ShellViewModel::welcomeLeft, this, [this] {
        m_presentation.settings.setOnboardingComplete(true);
        Q_EMIT mainWindowRequested();
    });
    m_globalKeys.lead(m_presentation, *m_lock.service, [this] { reopen(); });
    letThePersonApprove();
    followTheLock();
    for (const QUuid &chat : m_storage.expired) {
        if (m_notifications)
            m_notifications->withdrawChat(chat);
    }
}

// What still runs beside the GUI thread may use the services, so it ends before they go; the chat that calls
// wait in goes before the registry does.
AppState::~AppState()
{
    m_work.end();
    m_assistant.tools->setHooks({});
}

// The one thing that a service is told later: a call waits for the person in the window.
void AppState::letThePersonApprove()
{
    const auto ask = [&chat = *m_presentation.chat](bool offersChatWideYes) {
        return [&chat, offersChatWideYes](const QString &verb, const AIToolCall &call, const AITool &) {
            return chat.requestApproval(verb, call, offersChatWideYes);
        };
    };
    ToolRegistry::Hooks hooks;
    hooks.approvalHandler = ask(false);
    hooks.chatWideApprovalHandler = ask(true);
    hooks.permissionAttentionHandler = [&chat = *m_presentation.chat](const UserPresentableError &error) {
        chat.showPermissionProblem(error);
    };
    m_assistant.tools->setHooks(std::move(hooks));
    connect(m_presentation.chat.get(), &ChatViewModel::needsAttention, this, &AppState::mainWindowRequested);
}

void AppState::followTheLock()
{
    m_lock.service->onLock = [this] {
        m_presentation.conceal();
        m_assistant.memory->conceal();
        m_assistant.systemPrompts->conceal();
    };
    m_lock.service->onUnlock = [this] { chatsCanBeOpened(); };
}

void AppState::chatsCanBeOpened()
{
    m_presentation.chat->reveal();
    m_assistant.memory->readAnew();
    m_assistant.systemPrompts->load();
    m_storage.catchUpAfterUnlock();
    m_presentation.conversations->refresh();
    if (std::exchange(m_modelWaitsForKey, false))
        m_assistant.localModel->prepare();
}

void AppState::showWhatChangedNotice()
{
    if (!WhatChangedNotice::isDue(*m_storage.defaults))
        return;
    m_presentation.shell->ask(WhatChangedNotice::title(), WhatChangedNotice::lines().join(u"\n\n"_s),
                              {u"Continue"_s},
                              [this](int) { WhatChangedNotice::wasRead(*m_storage.defaults); });
}

// Where chats can't be opened, that is what the person has to read first.
bool AppState::showOnboarding() const
{
    return !m_presentation.settings.onboardingComplete() && !m_storage.startupError;
}

void AppState::showFirstWindow()
{
    Q_EMIT windowNeeded();
    if (showOnboarding())
        Q_EMIT m_presentation.shell->welcomeRequested();
    else
        Q_EMIT mainWindowRequested();
}

void AppState::start(FirstWindow window)
{
    if (m_lock.service->isEnabled())
        m_lock.service->startWatching();
    m_globalKeys.service->registerShortcuts();
    if (window == FirstWindow::now)
        showFirstWindow();
    showWhatChangedNotice();
    m_storeNotices.start();
    m_about.tellOfCrash(*m_presentation.shell);
    Log::info(Log::Category::App, "Application started (%s)"_L1, {SettingsStore::versionText()});
    didBecomeActive();
    m_modelWaitsForKey = m_lock.service->isLocked(); // it is checked against a sealed record
    if (!m_modelWaitsForKey)
        m_assistant.localModel->prepare();
}

void AppState::reopen()
{
    showFirstWindow();
}

void AppState::didBecomeActive()
{
    m_lock.service->evaluate();
    m_sealingWatch.tryAgain();
}

AppState::Termination AppState::shouldTerminate()
{
    GhostDesk &ghosts = *m_presentation.chat->ghosts();
    if (!ghosts.holdsMessages())
        return Termination::now;
    // Another question is answered first: this one would take its place, and its answer with it.
    if (!m_presentation.shell->questionTitle().isEmpty()) {
        Q_EMIT mainWindowRequested();
        return Termination::cancel;
    }
    const auto question = GhostQuestion::leaving(m_storage.vault->isLocked());
    m_presentation.shell->ask(question.title, question.text, question.buttons,
                              [this, question, &ghosts](int button) {
                                  switch (question.answer(button)) {
                                  case GhostQuestion::Answer::cancel:
                                      return;
                                  case GhostQuestion::Answer::keep:
                                      if (!ghosts.keepGhost())
                                          return; // nothing of it is lost
                                      break;
                                  case GhostQuestion::Answer::drop:
                                      ghosts.dropGhost();
                                  }
                                  Q_EMIT quitConfirmed();
                              });
    Q_EMIT mainWindowRequested();
    return Termination::cancel;
}

void AppState::endWhatRuns()
{
    m_voice.tts->stop();
    if (m_voice.speech)
        m_voice.speech->cancelRecording();
    m_presentation.chat->endTurns();
    m_assistant.localModel->end();
}

void AppState::deleteRecords()
{
    endWhatRuns();
    try {
        m_storage.repository->deleteAll();
    } catch (const PersistenceError &) {
        // Logged where it failed; the store's files go all the same.
    }
    if (m_notifications)
        m_notifications->withdrawAll();
    m_assistant.memory->clear();
    m_assistant.systemPrompts->reset();
}

void AppState::willTerminate()
{
    m_globalKeys.service->unregisterShortcuts();
    endWhatRuns();
    try {
        m_storage.repository->save();
    } catch (const PersistenceError &) {
        // Logged where it failed; there is no window left to show it.
    }
}

} // namespace morvane
