#pragma once

#include "async/TaskHandle.h"
#include "view_models/settings/ServerModelsViewModel.h"

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
class SettingsStore;

// Settings > AI: the server that replies come from. Changes apply at once.
class AISettingsViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(QString address READ address WRITE setAddress NOTIFY addressChanged)
    // Why the address can't be used as it stands; empty when it can.
    Q_PROPERTY(QString addressProblem READ addressProblem NOTIFY addressChanged)
    Q_PROPERTY(QString model READ model WRITE setModel NOTIFY modelChanged)
    Q_PROPERTY(morvane::ServerModelsViewModel *serverModels READ serverModels CONSTANT)
    Q_PROPERTY(bool hasKey READ hasKey NOTIFY keyChanged)
    Q_PROPERTY(double temperature READ temperature WRITE setTemperature NOTIFY temperatureChanged)
    Q_PROPERTY(
        int maxOutputTokens READ maxOutputTokens WRITE setMaxOutputTokens NOTIFY maxOutputTokensChanged)
    Q_PROPERTY(int maxContextMessages READ maxContextMessages WRITE setMaxContextMessages NOTIFY
                   maxContextMessagesChanged)
    Q_PROPERTY(TestState testState READ testState NOTIFY testChanged)
    Q_PROPERTY(QString testMessage READ testMessage NOTIFY testChanged)
    Q_PROPERTY(QString testSuggestion READ testSuggestion NOTIFY testChanged)

public:
    enum class TestState { untested, running, succeeded, failed };
    Q_ENUM(TestState)

    AISettingsViewModel(SettingsStore &settings, KeychainServicing &keychain, AIRequestRouter &router,
                        HttpSessionProviding &network, QObject *parent = nullptr);

    [[nodiscard]] QString address() const;
    void setAddress(const QString &address);
    [[nodiscard]] QString addressProblem() const;
    [[nodiscard]] QString model() const;
    void setModel(const QString &model);
    [[nodiscard]] ServerModelsViewModel *serverModels() { return &m_serverModels; }
    [[nodiscard]] bool hasKey() const;
    [[nodiscard]] double temperature() const;
    void setTemperature(double temperature);
    [[nodiscard]] int maxOutputTokens() const;
    void setMaxOutputTokens(int limit);
    [[nodiscard]] int maxContextMessages() const;
    void setMaxContextMessages(int count);
    [[nodiscard]] TestState testState() const { return m_testState; }
    [[nodiscard]] const QString &testMessage() const { return m_testMessage; }
    [[nodiscard]] const QString &testSuggestion() const { return m_testSuggestion; }

    // Stores the key in the keychain, off this thread; the empty text removes it. The key is never read back
    // to the window.
    Q_INVOKABLE void saveKey(const QString &key);
    Q_INVOKABLE void test();
    Q_INVOKABLE void cancelTest();

Q_SIGNALS:
    void addressChanged();
    void modelChanged();
    void keyChanged();
    void temperatureChanged();
    void maxOutputTokensChanged();
    void maxContextMessagesChanged();
    void testChanged();

private:
    static QCoro::Task<> storeKey(QPointer<AISettingsViewModel> self, KeychainServicing *keychain,
                                  QString key);
    static QCoro::Task<> runTest(QPointer<AISettingsViewModel> self, std::stop_token stop);
    void finishTest(TestState state, const QString &message, const QString &suggestion);
    void forgetTest();

    SettingsStore &m_settings;
    KeychainServicing &m_keychain;
    AIRequestRouter &m_router;
    ServerModelsViewModel m_serverModels;
    TestState m_testState = TestState::untested;
    QString m_testMessage;
    QString m_testSuggestion;
    TaskHandle m_test;
    TaskHandle m_keySaving;
};

} // namespace morvane
