#pragma once

#include "ai/tools/ToolRegistry.h"
#include "memory/MemoryStore.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "security/InMemoryKeychainService.h"
#include "security/LocalDataVault.h"
#include "services/DesktopActing.h"
#include "services/ScreenGlanceError.h"
#include "services/ScreenGlancing.h"
#include "services/WebAccessError.h"
#include "services/WebAccessing.h"
#include "support/Await.h"
#include "support/ManualClock.h"

#include <gtest/gtest.h>

namespace morvane {

// The web, the desktop and the screen as a test wrote them. An error, once set, is what every call of its
// kind ends in.
class FakeWorld final : public WebAccessing, public DesktopActing, public ScreenGlancing {
public:
    [[nodiscard]] SearchService searchService() const override { return service; }
    QCoro::Task<std::vector<SearchResult>> search(QString query, std::stop_token stop) override;
    QCoro::Task<Page> readPage(QString url, qsizetype limit, std::stop_token stop) override;
    QCoro::Task<QString> openLink(QString url, std::stop_token stop) override;
    QCoro::Task<QString> createEvent(EventWish wish, std::stop_token stop) override;
    QCoro::Task<ShortcutAnswer> runShortcut(QString name, std::optional<QString> input,
                                            std::stop_token stop) override;
    QCoro::Task<QString> captureText(std::stop_token stop) override;

    std::vector<SearchResult> results{
        {QStringLiteral("One"), QStringLiteral("https://found.example/One/"), QStringLiteral("first"), {}}};
    SearchService service = SearchService::builtIn;
    Page page{QStringLiteral("Title"), QStringLiteral("Text of the page.")};
    ShortcutAnswer shortcutAnswer{QStringLiteral("Ran.")};
    QString screenText = QStringLiteral("words on the screen");
    std::exception_ptr searchError;
    std::exception_ptr readError;
    std::exception_ptr desktopError;
    std::exception_ptr screenError;
    std::function<void()> onRead; // while a page is being fetched
    QStringList happened;         // what left the machine, was changed or was looked at
};

// A registry over doubles of everything it acts on, and a person who answers as a test says.
class ToolFixture : public testing::Test {
protected:
    ToolFixture();

    // The person, and a witness of what was completed.
    [[nodiscard]] ToolRegistry::Hooks hooks();

    [[nodiscard]] static AIToolCall call(const QString &name,
                                         const QString &arguments = QStringLiteral("{}"));
    // A call with the arguments that a sensible model would give.
    [[nodiscard]] static AIToolCall usual(const QString &name);

    AIToolResult dispatch(const AIToolCall &call, std::shared_ptr<TurnContext> turn = {},
                          std::stop_token stop = {});

    // A turn of a chat with somebody there, whose words name https://typed.example/Page.
    [[nodiscard]] static std::shared_ptr<TurnContext>
    turnOf(TurnContext::Attendance attendance = TurnContext::Attendance::attended,
           const std::vector<AIMessage> &messages = {});

    ManualClock clock;
    InMemorySettingsRepository repository;
    SettingsStore settings{repository};
    InMemoryKeychainService keychain;
    LocalDataVault vault{keychain};
    MemoryStore memory{settings, vault, clock, QString()};
    std::shared_ptr<FakeWorld> world = std::make_shared<FakeWorld>();
    QStringList &happened = world->happened;
    ToolRegistry registry{{settings, memory, *world, clock, world.get(), world}};

    ApprovalAnswer answer = ApprovalAnswer::allowedOnce;
    std::function<void()> onAsked; // while the person thinks
    QStringList asked;             // verbs; those that offered a yes for the chat end in "+"
    std::vector<AIToolResult> completed;
    int attentions = 0;
};

template <typename Error>
std::exception_ptr failure(Error error)
{
    return std::make_exception_ptr(std::move(error));
}

} // namespace morvane
