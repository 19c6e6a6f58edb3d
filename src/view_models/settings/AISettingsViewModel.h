#pragma once

#include "async/TaskHandle.h"
#include "view_models/settings/ConnectionFindings.h"
#include "view_models/settings/ServerModelsViewModel.h"
#include "view_models/settings/StoredKey.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <optional>
#include <stop_token>

namespace morvane {

class AIRequestRouter;
class HttpSessionProviding;
class KeychainServicing;
class Work;
class SettingsStore;

// Settings > AI: whether the server that the settings name can be used, and what it offers.
class AISettingsViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    // Why the address can't be used as it stands; empty when it can.
    Q_PROPERTY(QString addressProblem READ addressProblem NOTIFY addressProblemChanged)
    Q_PROPERTY(morvane::ServerModelsViewModel *serverModels READ serverModels CONSTANT)
    Q_PROPERTY(bool hasKey READ hasKey NOTIFY keyChanged)
    // Why the saved key isn't sent to the server that the settings name; empty when it is or there is none.
    Q_PROPERTY(QString keyNotice READ keyNotice NOTIFY keyChanged)
    Q_PROPERTY(TestState testState READ testState NOTIFY testChanged)
    Q_PROPERTY(QString testMessage READ testMessage NOTIFY testChanged)
    Q_PROPERTY(QString testSuggestion READ testSuggestion NOTIFY testChanged)
    Q_PROPERTY(morvane::ConnectionFindings *findings READ findings CONSTANT)
    // What a reply may really have when that is more than the settings name; empty when it isn't.
    Q_PROPERTY(QString replyLimitNotice READ replyLimitNotice NOTIFY replyLimitChanged)

public:
    enum class TestState { untested, running, succeeded, failed };
    Q_ENUM(TestState)

    AISettingsViewModel(SettingsStore &settings, KeychainServicing &keychain, AIRequestRouter &router,
                        HttpSessionProviding &network, Work &work, QObject *parent = nullptr);

    [[nodiscard]] QString addressProblem() const;
    [[nodiscard]] ServerModelsViewModel *serverModels() { return &m_serverModels; }
    [[nodiscard]] bool hasKey() const { return m_key.exists(); }
    [[nodiscard]] QString keyNotice() const;
    [[nodiscard]] TestState testState() const { return m_testState; }
    [[nodiscard]] const QString &testMessage() const { return m_testMessage; }
    [[nodiscard]] const QString &testSuggestion() const { return m_testSuggestion; }

    [[nodiscard]] ConnectionFindings *findings() { return &m_findings; }
    [[nodiscard]] QString replyLimitNotice() const;

    // For the server that the settings name now, and for no other. The empty text removes the key.
    Q_INVOKABLE void saveKey(const QString &key);
    Q_INVOKABLE void test();
    Q_INVOKABLE void cancelTest();

Q_SIGNALS:
    void addressProblemChanged();
    void keyChanged();
    void testChanged();
    void replyLimitChanged();

private:
    static QCoro::Task<> runTest(QPointer<AISettingsViewModel> self, std::stop_token stop);
    void finishTest(TestState state, const QString &message, const QString &suggestion);
    void failTest(const ErrorPresentation &why);
    void forgetTest();
    void finishSaving(QString keyOrigin);

    SettingsStore &m_settings;
    AIRequestRouter &m_router;
    StoredKey m_key;
    struct KeySave {
        QString formerOrigin;
        QString origin;
    };
    std::optional<KeySave> m_keySave; // while one is under way
    ServerModelsViewModel m_serverModels;
    TestState m_testState = TestState::untested;
    QString m_testMessage;
    QString m_testSuggestion;
    ConnectionFindings m_findings;
    TaskHandle m_test;
};

} // namespace morvane
