#include "app/AppState.h"

#include "async/Work.h"
#include "security/InMemoryKeychainService.h"
#include "services/WebAccessService.h"
#include "support/Await.h"
#include "support/ManualClock.h"
#include "view_models/settings/AISettingsViewModel.h"
#include "view_models/settings/SearchKeyViewModel.h"

#include <QScopeGuard>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <semaphore>
#include <thread>
#include <type_traits>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// A keychain that is slow off the test's thread: it answers a good while after the program began to end.
// Dying while a call is inside fails the test.
class SlowKeychain final : public InMemoryKeychainService {
public:
    ~SlowKeychain() override { EXPECT_EQ(m_inside, 0) << "the keychain went while it was in use"; }

    void save(const QString &value, const QString &account) override
    {
        slowly([&] { InMemoryKeychainService::save(value, account); });
    }
    std::optional<QString> read(const QString &account) override
    {
        return slowly([&] { return InMemoryKeychainService::read(account); });
    }
    using InMemoryKeychainService::read;

    std::counting_semaphore<> began{0};
    std::atomic<bool> isQuitting = false;

private:
    template <typename Call>
    std::invoke_result_t<Call> slowly(const Call &call)
    {
        if (std::this_thread::get_id() == m_home)
            return call();
        ++m_inside;
        const auto leaves = qScopeGuard([this] { --m_inside; });
        began.release();
        while (!isQuitting)
            std::this_thread::yield();
        const auto until = std::chrono::steady_clock::now() + 100ms; // longer than anything takes to go
        while (std::chrono::steady_clock::now() < until)
            std::this_thread::yield();
        return call();
    }

    const std::thread::id m_home = std::this_thread::get_id();
    std::atomic<int> m_inside = 0;
};

// The program as it stands when it ends: secrets first, services on top.
struct Program {
    Program()
    {
        CommandLine commandLine;
        commandLine.profile = profile.path();
        commandLine.practiceServer = u"http://127.0.0.1:9/v1"_s;
        state =
            std::make_unique<AppState>(commandLine, Host::test, clock, Secrets{*keychain, *keychain}, work);
    }
    ~Program()
    {
        keychain->isQuitting = true;
        state.reset();
        keychain.reset();
    }

    QTemporaryDir profile;
    ManualClock clock;
    std::unique_ptr<SlowKeychain> keychain = std::make_unique<SlowKeychain>();
    Work work{clock};
    std::unique_ptr<AppState> state;
};

TEST(QuitTest, WhatRunsBesideTheGuiThreadEndsBeforeTheSecretsGo)
{
    QCoro::Task<std::vector<WebAccessing::SearchResult>> asked;
    const std::pair<const char *, std::function<void(AppState &)>> cases[] = {
        {"the key of the person's service",
         [](AppState &state) { state.presentation().aiSettings->saveKey(u"sk"_s); }},
        {"the key for searching", [](AppState &state) { state.presentation().searchKey->save(u"sk"_s); }},
        {"the credential of a search",
         [&asked](AppState &state) { asked = state.assistant().web->search(u"ferns"_s, {}); }},
    };
    for (const auto &[what, begin] : cases) {
        SCOPED_TRACE(what);
        Program program;
        begin(*program.state);
        program.keychain->began.acquire();
    }
    TestWait::settle();
}

} // namespace

} // namespace morvane
