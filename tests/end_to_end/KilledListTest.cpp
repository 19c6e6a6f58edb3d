#include "app/AppState.h"
#include "app/PrivateCloudParts.h"
#include "app/SecretKeeping.h"
#include "app/WhatChangedNotice.h"
#include "attestation/VeniceMeasurementLists.h"
#include "end_to_end/KilledAtCall.h"
#include "support/Await.h"
#include "support/ManualClock.h"
#include "support/PrivateCloudServer.h"

#include <QDir>
#include <QJsonDocument>
#include <QProcess>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <set>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// The whole program, killed while it takes a newer list that withdraws servers.
class KilledListTest : public testing::Test {
protected:
    using Versions = std::pair<std::int64_t, std::int64_t>; // of the anchor and of the state

    // What a profile holds of lists, and what is accepted by it.
    struct Kept {
        VeniceMeasurementListAnchor anchor;
        std::int64_t stateVersion = 0; // of the list in the file; 0 for none
        QStringList accepted;          // models

        [[nodiscard]] std::int64_t version() const
        {
            return anchor.marks.empty() ? 0 : anchor.marks.begin()->second.version;
        }
        [[nodiscard]] Versions versions() const { return {version(), stateVersion}; }
        bool operator==(const Kept &) const = default;
    };

    KilledListTest()
    {
        // Only its first list is not the older one.
        QTcpSocket first;
        first.connectToHost(u"127.0.0.1"_s, older.port());
        first.write("GET /v1/measurements HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n");
        EXPECT_TRUE(first.waitForDisconnected());
    }

    // A start of the application, at a time when a list is due, and its refresh.
    Kept afterARefreshFrom(const PrivateCloudServer &server)
    {
        CommandLine commandLine;
        commandLine.profile = profile->path();
        commandLine.devRelay = DevRelay::Origin{DevRelay::Loopback::ipv4, server.port()};
        Work work(clock);
        SecretKeeping secrets(commandLine.folders(), std::make_unique<AbsentKeyring>(), work);
        const auto opening = TestWait::await(secrets.preparation().prepare(KeyExpectation::Unknown));
        EXPECT_TRUE(isReady(opening.state));
        AppState state(commandLine, Host::test, clock, {secrets.keychain(), secrets.keychain()}, work);
        WhatChangedNotice::decideOnce(*state.storage().defaults, false); // it would stand before the question
        VeniceMeasurementLists &lists = *state.assistant().privateCloud->lists;
        clock.advance(7h);
        const auto refresh = TestWait::await(lists.refreshIfDue(clock.now(), {}));
        if (refresh)
            (void)TestWait::await(refresh->wait({}));
        EXPECT_TRUE(refresh) << "nothing was fetched";
        return kept(state, secrets.keychain(), commandLine.folders());
    }

    Kept kept(AppState &state, KeychainServicing &keychain, const SupportFolders &folders)
    {
        using Store = VeniceMeasurementListStore;
        Kept kept;
        kept.anchor = VeniceMeasurementAnchorStore(&keychain).read();
        const auto loaded =
            Store(*state.storage().vault, Store::defaultDirectory(folders), Store::developmentFileName)
                .load();
        const auto list = std::get<Store::State>(loaded).list;
        if (list)
            kept.stateVersion = QJsonDocument::fromJson(*list)["listVersion"_L1].toInt();
        const auto allowlist = state.assistant().privateCloud->lists->allowlist(clock.now());
        for (const auto &[model, stacks] : allowlist.stacksByModel)
            kept.accepted += model;
        return kept;
    }

    // False when it came to its end before the call.
    bool isKilledAt(int call)
    {
        QProcess program;
        program.setProcessEnvironment(killedAtCall(call, profile->filePath(u"data/ai.morvane.macos"_s)));
        program.start(QStringLiteral(MORVANE_PROGRAM),
                      {u"--profile"_s, profile->path(), u"--dev-relay"_s, u"127.0.0.1:%1"_s.arg(newer.port()),
                       u"--play-demo"_s, profile->filePath(u"demo.png"_s)});
        EXPECT_TRUE(program.waitForFinished(60'000));
        return program.exitStatus() == QProcess::CrashExit;
    }

    PrivateCloudServer older{{u"--list"_s, u"rolled-back"_s}};
    PrivateCloudServer newer{{u"--list"_s, u"withdrawn"_s}};
    ManualClock clock;
    std::optional<QTemporaryDir> profile;
};

TEST_F(KilledListTest, NoVersionGoesBackAndNoWithdrawalIsLost)
{
    std::set<Versions> seen;
    const std::set<QString> withdrawn{u"development.built-in"_s, u"development.e2ee-practice"_s};
    for (int call = 1; !HasFailure(); ++call) {
        SCOPED_TRACE(call);
        profile.emplace();
        const Kept before = afterARefreshFrom(older);
        ASSERT_EQ(before.versions(), Versions(4, 4));
        const bool wasKilled = isKilledAt(call);
        const Kept after = afterARefreshFrom(older);
        seen.insert(after.versions());
        const bool isNewer = after.version() == 5;
        EXPECT_EQ(after.anchor.revoked, isNewer ? withdrawn : std::set<QString>());
        EXPECT_LE(after.stateVersion, after.version()) << "used before it was remembered";
        if (!isNewer) {
            EXPECT_EQ(after, before) << "the last good list stays";
        }
        for (const auto &model : {u"e2ee-practice"_s, u"e2ee-glm-5-3-flash"_s})
            EXPECT_EQ(after.accepted.contains(model), !isNewer) << model.toStdString();

        const Kept taken = afterARefreshFrom(newer);
        EXPECT_EQ(taken.versions(), Versions(5, 5));
        EXPECT_EQ(taken.accepted.size(), before.accepted.size() - 2);
        if (!wasKilled)
            break;
    }
    EXPECT_EQ(seen, (std::set<Versions>{{4, 4}, {5, 4}, {5, 5}})) << "the calls were not seen";
}

} // namespace

} // namespace morvane
