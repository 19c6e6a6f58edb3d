#pragma once

#include "async/Work.h"
#include "network/CurlHttpSession.h"
#include "network/NetworkLedger.h"
#include "persistence/InMemorySettingsRepository.h"
#include "security/InMemoryKeychainService.h"
#include "security/ServiceIdentity.h"
#include "services/WebAccessError.h"
#include "services/WebAccessService.h"
#include "support/Await.h"
#include "support/FakeHttpSession.h"
#include "support/ManualClock.h"
#include "support/ScriptedServer.h"

#include <gtest/gtest.h>

namespace morvane {

// What the web service stands on, and how a call to it ends.
class WebServiceFixture : public testing::Test {
protected:
    using Error = std::optional<WebAccessError::Case>;

    template <typename T>
    static Error errorOf(QCoro::Task<T> task)
    {
        return errorOf(TestWait::begin(std::move(task)));
    }
    // The same for a call that is under way.
    template <typename T>
    static Error errorOf(const std::shared_ptr<TestWait::Outcome<T>> &call)
    {
        try {
            static_cast<void>(TestWait::result(call));
        } catch (const WebAccessError &error) {
            return error.reason();
        }
        return std::nullopt;
    }
    std::shared_ptr<HttpSession> realSession(EgressFeature feature)
    {
        return std::make_shared<CurlHttpSession>(feature, SensitiveDataSet(), ledger, clock);
    }

    NetworkLedger ledger;
    ManualClock clock;
    InMemoryKeychainService keychain;
    InMemorySettingsRepository counters;
    ServiceIdentity identity{keychain};
    FakeHttpSessionProvider network;
    Work work{clock};
    WebAccessService::Services services{network, keychain, identity, counters, clock, work};
};

} // namespace morvane
