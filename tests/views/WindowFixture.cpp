#include "WindowFixture.h"

#include "ai/routing/AIRequestRouter.h"
#include "app/MainWindowController.h"
#include "models/ChatMessage.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/SettingsStore.h"
#include "support/Await.h"
#include "utils/text/Identifier.h"
#include "view_models/ShellViewModel.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/sidebar/ConversationListModel.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QTest>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QStringList *complaints = nullptr;
QtMessageHandler formerHandler = nullptr;

void noteComplaint(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    // The program's own log has categories; off screen there is no stack of windows to raise one in.
    const bool counts = type != QtDebugMsg && type != QtInfoMsg &&
                        !QByteArrayView(context.category).startsWith("ai.morvane") &&
                        !message.contains("raise()"_L1);
    if (complaints && counts)
        *complaints += message;
    formerHandler(type, context, message);
}

} // namespace

// Answers piece by piece as the test goes.
class ScriptedProvider final : public AIProvider {
public:
    AsyncStream<AIStreamEvent> streamReply(std::vector<AIMessage>, AIConfiguration configuration,
                                           std::vector<AITool>) override
    {
        proofRow = configuration.proofRow;
        auto [stream, producer] = AsyncStream<AIStreamEvent>::make();
        reply = std::move(producer);
        return std::move(stream);
    }

    std::optional<AsyncStream<AIStreamEvent>::Producer> reply; // the newest
    QUuid proofRow;                                            // of the newest
};

WindowFixture::WindowFixture()
    : m_clock(QDateTime::currentDateTimeUtc()) // the window counts an approval down by the real one
    , m_provider(std::make_shared<ScriptedProvider>())
{
    m_runtime.version = u"0.34.0"_s;
    m_runtime.releaseOrigin = QUrl(u"http://127.0.0.1:1"_s);
    m_runtime.serverOrigin = m_runtime.releaseOrigin;
    m_runtime.folder = m_profile.filePath(u"runtime"_s);
    m_runtime.models = m_runtime.folder;
    complaints = &m_complaints;
    formerHandler = qInstallMessageHandler(noteComplaint);
    start();
}

WindowFixture::~WindowFixture()
{
    close();
    qInstallMessageHandler(formerHandler);
    complaints = nullptr;
}

void WindowFixture::start()
{
    close();
    CommandLine commandLine;
    commandLine.profile = m_profile.path();
    commandLine.devRuntime = m_runtime;
    m_work.emplace(m_clock);
    m_app = std::make_unique<AppState>(commandLine, Host::test, m_clock,
                                       Secrets{m_keychain, m_keychain, false, m_isKeyWrapped}, *m_work,
                                       nullptr, m_voice, m_desktop, LockPorts{}, m_keys);
    m_app->assistant().router->injectProvider(m_provider);
    m_app->storage().settings->setModel(u"practice"_s);
    m_app->storage().settings->setReduceAnimation(true); // nothing slides, so nothing has to be waited for
    QObject::connect(m_app->presentation().shell.get(), &ShellViewModel::linkRequested,
                     [this](const QUrl &link) { m_openedLinks += link.toString(); });
}

// Ends what a test left running first, so that no suspended turn outlives its services.
void WindowFixture::close()
{
    if (!m_app)
        return;
    m_app->presentation().chat->decline();
    m_app->willTerminate();
    TestWait::settle();
    m_controller.reset();
    m_app.reset();
    TestWait::settle();
}

void WindowFixture::load()
{
    m_controller = std::make_unique<MainWindowController>(m_app->presentation());
    m_window = m_controller->window();
    ASSERT_NE(m_window, nullptr);
    m_controller->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_window));
    settle();
}

void WindowFixture::TearDown()
{
    EXPECT_TRUE(m_complaints.isEmpty()) << m_complaints.join(u'\n').toStdString();
}

QString WindowFixture::addChat(const QString &title, const QStringList &messages,
                               const std::function<void(ChatMessage &last)> &finish)
{
    m_clock.advance(1s);
    ConversationRepository &repository = *m_app->storage().repository;
    const auto chat = repository.create();
    for (qsizetype i = 0; i < messages.size(); ++i) {
        const bool isReply = (messages.size() - i) % 2 == 1;
        const auto message =
            repository.makeMessage({.id = QUuid::createUuid(),
                                    .role = isReply ? MessageRole::assistant : MessageRole::user,
                                    .content = messages[i],
                                    .createdAt = m_clock.now().addMSecs(i - messages.size()),
                                    .status = MessageStatus::delivered});
        if (finish && i + 1 == messages.size())
            finish(*message);
        repository.add(message, *chat);
    }
    repository.rename(*chat, title);
    m_app->presentation().conversations->refresh();
    return Identifier::text(chat->id());
}

void WindowFixture::showReply(const QString &text, const std::function<void(ChatMessage &reply)> &finish)
{
    m_app->presentation().chat->open(addChat(u"A chat"_s, {u"Question"_s, text}, finish));
    settle();
}

void WindowFixture::send(const QString &words)
{
    asking([&] {
        m_app->presentation().chat->setDraft(words);
        m_app->presentation().chat->send();
    });
}

void WindowFixture::asking(const std::function<void()> &action)
{
    m_provider->reply.reset();
    action();
    TestWait::until([this] { return m_provider->reply.has_value(); });
    settle();
}

void WindowFixture::stream(const QString &piece)
{
    m_provider->reply->yield(AIStream::Text{piece});
    TestWait::settle();
    m_clock.advance(1s); // a piece held back is stored by then
    settle();
}

void WindowFixture::endReply()
{
    m_provider->reply->finish();
    TestWait::until([this] { return !m_app->presentation().chat->isResponding(); });
    settle();
}

void WindowFixture::failReply(std::exception_ptr error)
{
    m_provider->reply->fail(std::move(error));
    TestWait::until([this] { return !m_app->presentation().chat->isResponding(); });
    settle();
}

void WindowFixture::leaveProof(ProofLedger::Entry row)
{
    row.id = m_provider->proofRow;
    m_app->assistant().proofs->append(std::move(row));
}

bool WindowFixture::isAbandoned() const
{
    return m_provider->reply->stopToken().stop_requested();
}

void WindowFixture::askToSearch(const QString &words, bool offersChatWideYes)
{
    const AIToolCall call{u"1"_s, u"search_web"_s, uR"({"query":"%1"})"_s.arg(words)};
    [](QCoro::Task<ApprovalAnswer> asked, QStringList *answers) -> QCoro::Task<> {
        const ApprovalAnswer answer = co_await asked;
        *answers += answer == ApprovalAnswer::declined         ? u"no"_s
                    : answer == ApprovalAnswer::allowedForChat ? u"yes for the chat"_s
                                                               : u"yes"_s;
    }(m_app->presentation().chat->requestApproval(u"Search the web"_s, call, offersChatWideYes), &m_answers);
    settle();
}

QQuickItem *WindowFixture::named(const QString &name) const
{
    const auto items = allItems();
    const auto found = std::find_if(items.begin(), items.end(), [&](QQuickItem *item) {
        return item->isVisible() && item->width() > 0 && accessibleName(item) == name;
    });
    return found == items.end() ? nullptr : *found;
}

bool WindowFixture::shows(QQuickWindow *window, const QString &text)
{
    const auto items = WindowDriver::allItems(window);
    return std::any_of(items.begin(), items.end(), [&](QQuickItem *item) {
        return item->isVisible() && item->property("text").toString().contains(text);
    });
}

bool WindowFixture::isAt(QQuickWindow *window, const QString &name)
{
    return window->activeFocusItem() && accessibleName(window->activeFocusItem()) == name;
}

QString WindowFixture::accessibleName(QQuickItem *item)
{
    QAccessibleInterface *face = QAccessible::queryAccessibleInterface(item);
    return face ? face->text(QAccessible::Name) : QString();
}

QString WindowFixture::clipboard()
{
    return QGuiApplication::clipboard()->text();
}

QStringList WindowFixture::transcript() const
{
    QStringList texts;
    for (const auto &message : m_app->presentation().chat->messages()->messages())
        texts += message->content();
    return texts;
}

} // namespace morvane
