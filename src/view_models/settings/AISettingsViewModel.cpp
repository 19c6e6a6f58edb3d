#include "view_models/settings/AISettingsViewModel.h"

#include "ai/contract/BaseURL.h"
#include "ai/contract/ProviderError.h"
#include "ai/providers/ServerModels.h"
#include "ai/routing/AIRequestRouter.h"
#include "async/CancelledError.h"
#include "persistence/SettingsStore.h"
#include "security/KeychainError.h"
#include "security/KeychainServicing.h"
#include "security/KeychainTasks.h"
#include "utils/bytes/SecretBytes.h"
#include "utils/text/Text.h"

namespace morvane {

using namespace Qt::StringLiterals;

AISettingsViewModel::AISettingsViewModel(SettingsStore &settings, KeychainServicing &keychain,
                                         AIRequestRouter &router, HttpSessionProviding &network,
                                         QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_keychain(keychain)
    , m_router(router)
    , m_serverModels([&router, &network](std::stop_token stop) {
        return ServerModels::list(&network, router.settingsConfiguration(), std::move(stop));
    })
{
    const auto forward = [this, &settings](auto changed, auto mine) {
        connect(&settings, changed, this, mine);
        connect(&settings, changed, this, &AISettingsViewModel::forgetTest);
    };
    forward(&SettingsStore::baseURLStringChanged, &AISettingsViewModel::addressChanged);
    connect(&settings, &SettingsStore::baseURLStringChanged, &m_serverModels, &ServerModelsViewModel::forget);
    forward(&SettingsStore::modelChanged, &AISettingsViewModel::modelChanged);
    forward(&SettingsStore::temperatureChanged, &AISettingsViewModel::temperatureChanged);
    forward(&SettingsStore::maxOutputTokensChanged, &AISettingsViewModel::maxOutputTokensChanged);
    forward(&SettingsStore::maxContextMessagesChanged, &AISettingsViewModel::maxContextMessagesChanged);
}

QString AISettingsViewModel::address() const
{
    return m_settings.baseURLString();
}

void AISettingsViewModel::setAddress(const QString &address)
{
    m_settings.setBaseURLString(address);
}

QString AISettingsViewModel::addressProblem() const
{
    try {
        (void)BaseURL::validated(m_settings.baseURLString());
        return {};
    } catch (const ProviderError &error) {
        return error.userMessage();
    }
}

QString AISettingsViewModel::model() const
{
    return m_settings.model();
}

void AISettingsViewModel::setModel(const QString &model)
{
    m_settings.setModel(model);
}

bool AISettingsViewModel::hasKey() const
{
    try {
        return m_keychain.read(AIRequestRouter::apiKeyAccount()).has_value();
    } catch (const KeychainError &) {
        return false;
    }
}

double AISettingsViewModel::temperature() const
{
    return m_settings.temperature();
}

void AISettingsViewModel::setTemperature(double temperature)
{
    m_settings.setTemperature(temperature);
}

int AISettingsViewModel::maxOutputTokens() const
{
    return static_cast<int>(m_settings.maxOutputTokens());
}

void AISettingsViewModel::setMaxOutputTokens(int limit)
{
    m_settings.setMaxOutputTokens(limit);
}

int AISettingsViewModel::maxContextMessages() const
{
    return static_cast<int>(m_settings.maxContextMessages());
}

void AISettingsViewModel::setMaxContextMessages(int count)
{
    m_settings.setMaxContextMessages(count);
}

void AISettingsViewModel::saveKey(const QString &key)
{
    m_keySaving = TaskHandle::start([this, key = Text::trimmed(key)](std::stop_token) {
        return storeKey(QPointer(this), &m_keychain, key);
    });
}

QCoro::Task<> AISettingsViewModel::storeKey(QPointer<AISettingsViewModel> self, KeychainServicing *keychain,
                                            QString key)
{
    ErrorPresentation failure;
    try {
        if (key.isEmpty())
            co_await KeychainTasks::remove(keychain, AIRequestRouter::apiKeyAccount());
        else
            co_await KeychainTasks::save(keychain, key, AIRequestRouter::apiKeyAccount());
    } catch (...) {
        failure = presentationOf(std::current_exception());
    }
    wipe(key);
    if (!self)
        co_return;
    if (failure.message.isEmpty())
        self->forgetTest();
    else
        self->finishTest(TestState::failed, failure.message, failure.suggestion.value_or(QString()));
    Q_EMIT self->keyChanged();
}

void AISettingsViewModel::test()
{
    finishTest(TestState::running, {}, {});
    m_test =
        TaskHandle::start([this](std::stop_token stop) { return runTest(QPointer(this), std::move(stop)); });
}

void AISettingsViewModel::cancelTest()
{
    m_test = {};
    forgetTest();
}

QCoro::Task<> AISettingsViewModel::runTest(QPointer<AISettingsViewModel> self, std::stop_token stop)
{
    ErrorPresentation failure;
    bool succeeded = false;
    try {
        co_await self->m_router.testConnection(self->m_router.settingsConfiguration(), stop);
        succeeded = true;
    } catch (...) {
        failure = presentationOf(std::current_exception());
    }
    if (!self || stop.stop_requested())
        co_return;
    if (succeeded)
        self->finishTest(TestState::succeeded, u"The server answered."_s, {});
    else
        self->finishTest(TestState::failed, failure.message, failure.suggestion.value_or(QString()));
}

void AISettingsViewModel::finishTest(TestState state, const QString &message, const QString &suggestion)
{
    m_testState = state;
    m_testMessage = message;
    m_testSuggestion = suggestion;
    Q_EMIT testChanged();
}

// A result says nothing about settings that changed after it.
void AISettingsViewModel::forgetTest()
{
    m_test = {};
    if (m_testState != TestState::untested)
        finishTest(TestState::untested, {}, {});
}

} // namespace morvane
