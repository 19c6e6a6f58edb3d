#pragma once

#include "async/TaskHandle.h"
#include "view_models/settings/ServerModelsViewModel.h"
#include "view_models/settings/StoredKey.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

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
    Q_PROPERTY(TestState testState READ testState NOTIFY testChanged)
    Q_PROPERTY(QString testMessage READ testMessage NOTIFY testChanged)
    Q_PROPERTY(QString testSuggestion READ testSuggestion NOTIFY testChanged)

public:
    enum class TestState { untested, running, succeeded, failed };
    Q_ENUM(TestState)

    AISettingsViewModel(SettingsStore &settings, KeychainServicing &keychain, AIRequestRouter &router,
                        HttpSessionProviding &network, Work &work, QObject *parent = nullptr);

    [[nodiscard]] QString addressProblem() const;
    [[nodiscard]] ServerModelsViewModel *serverModels() { return &m_serverModels; }
    [[nodiscard]] bool hasKey() const { return m_key.exists(); }
    [[nodiscard]] TestState testState() const { return m_testState; }
    [[nodiscard]] const QString &testMessage() const { return m_testMessage; }
    [[nodiscard]] const QString &testSuggestion() const { return m_testSuggestion; }

    // The empty text removes the key.
    Q_INVOKABLE void saveKey(const QString &key) { m_key.save(key); }
    Q_INVOKABLE void test();
    Q_INVOKABLE void cancelTest();

Q_SIGNALS:
    void addressProblemChanged();
    void keyChanged();
    void testChanged();

private:
    static QCoro::Task<> runTest(QPointer<AISettingsViewModel> self, std::stop_token stop);
    void finishTest(TestState state, const QString &message, const QString &suggestion);
    void failTest(const ErrorPresentation &why);
    void forgetTest();

    SettingsStore &m_settings;
    AIRequestRouter &m_router;
    StoredKey m_key;
    ServerModelsViewModel m_serverModels;
    TestState m_testState = TestState::untested;
    QString m_testMessage;
    QString m_testSuggestion;
    TaskHandle m_test;
};

} // namespace morvane
