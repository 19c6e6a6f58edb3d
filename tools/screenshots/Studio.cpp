#include "Studio.h"

#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/SettingsStore.h"
#include "support/Await.h"
#include "support/WindowDriver.h"
#include "utils/text/Identifier.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/sidebar/ConversationListModel.h"

#include <QDir>

#include <algorithm>
#include <stdexcept>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

void expect(bool holds, const char *what)
{
    if (!holds)
        throw std::runtime_error(what);
}

} // namespace

Studio::Studio(QString folder, QString suffix, bool dark)
    : m_folder(std::move(folder))
    , m_suffix(std::move(suffix))
{
    CommandLine commandLine;
    commandLine.profile = m_profile.path();
    commandLine.practiceServer = m_server.baseUrl();
    m_state =
        std::make_unique<AppState>(commandLine, Host::test, m_clock, Secrets{m_keychain, m_keychain}, m_work);
    m_state->storage().settings->setAppearance(dark ? AppAppearance::dark : AppAppearance::light);
    m_state->storage().settings->setReduceAnimation(true); // pictures of things that stand still
    m_window = std::make_unique<MainWindowController>(m_state->presentation());
    QObject::connect(m_state.get(), &AppState::mainWindowRequested, m_window.get(),
                     &MainWindowController::show);
    expect(window() != nullptr, "the window did not load");
    m_state->start();
    WindowDriver::settle();
}

Studio::~Studio()
{
    m_state->willTerminate();
    TestWait::settle();
    m_window.reset();
    m_state.reset();
}

void Studio::beginChat(const QString &model)
{
    m_state->storage().settings->setBaseURLString(m_server.baseUrl());
    m_state->storage().settings->setModel(model);
    m_state->presentation().chat->newConversation();
    WindowDriver::settle();
}

void Studio::say(const QString &words)
{
    m_state->presentation().chat->setDraft(words);
    m_state->presentation().chat->send();
}

void Studio::openChat(const QString &question, const QString &answer)
{
    ConversationRepository &repository = *m_state->storage().repository;
    const auto chat = repository.create();
    for (const auto &[role, text] :
         {std::pair{MessageRole::user, question}, {MessageRole::assistant, answer}})
        repository.add(repository.makeMessage({.id = QUuid::createUuid(),
                                               .role = role,
                                               .content = text,
                                               .createdAt = m_clock.now(),
                                               .status = MessageStatus::delivered}),
                       *chat);
    m_state->presentation().chat->open(Identifier::text(chat->id()));
    m_state->presentation().conversations->refresh();
}

void Studio::awaitReply()
{
    expect(WindowDriver::eventually([this] { return m_state->presentation().chat->turnsInFlight() == 0; }),
           "the reply never ended");
}

void Studio::awaitApproval()
{
    expect(WindowDriver::eventually([this] { return m_state->presentation().chat->hasApproval(); }),
           "nothing was asked");
}

void Studio::awaitText(const QString &text)
{
    const auto *messages = m_state->presentation().chat->messages();
    expect(WindowDriver::eventually([&] {
               const QModelIndex last = messages->index(messages->rowCount() - 1);
               return last.data(MessageListModel::TextRole).toString().contains(text);
           }),
           "the words never came");
}

void Studio::awaitParts(QQuickWindow *window)
{
    TestWait::until([window] {
        const auto isComing = [](const QQuickItem *item) {
            const bool isPart = item->inherits("QQuickLoader") || item->inherits("QQuickPopupItem");
            return isPart && item->isVisible() && item->opacity() < 1;
        };
        return std::ranges::none_of(WindowDriver::allItems(window), isComing);
    });
}

void Studio::take(const QString &name, QQuickWindow *window)
{
    WindowDriver::settle();
    awaitParts(window);
    QDir().mkpath(m_folder);
    const QString path = QDir(m_folder).filePath(name + m_suffix + u".png"_s);
    expect(window->grabWindow().convertToFormat(QImage::Format_RGB888).save(path, "PNG", 0),
           "a picture could not be saved");
}

} // namespace morvane
