#include "view_models/settings/AISettingsViewModel.h"

#include "ai/contract/BaseURL.h"
#include "ai/contract/ProviderError.h"
#include "ai/providers/ServerModels.h"
#include "ai/routing/AIRequestRouter.h"
#include "ai/routing/KeyOrigin.h"
#include "persistence/SettingsStore.h"
#include "utils/text/Text.h"
#include "utils/text/UserPresentableError.h"
#include "view_models/settings/ConnectionTrial.h"

#include <QLocale>

namespace morvane {

using namespace Qt::StringLiterals;

AISettingsViewModel::AISettingsViewModel(SettingsStore &settings, KeychainServicing &keychain,
                                         AIRequestRouter &router, HttpSessionProviding &network, Work &work,
                                         QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_router(router)
    , m_key(keychain, AIRequestRouter::apiKeyAccount(), work)
    , m_serverModels([&router, &network, &work](std::stop_token stop) {
        return ServerModels::list(&network, &work, router.settingsConfiguration(), std::move(stop));
    })
{
    for (const auto changed :
         {&SettingsStore::baseURLStringChanged, &SettingsStore::modelChanged,
          &SettingsStore::temperatureChanged, &SettingsStore::maxOutputTokensChanged,
          &SettingsStore::maxContextMessagesChanged, &SettingsStore::abilitiesEnabledChanged})
        connect(&settings, changed, this, &AISettingsViewModel::forgetTest);
    connect(&settings, &SettingsStore::baseURLStringChanged, this,
            &AISettingsViewModel::addressProblemChanged);
    for (const auto changed : {&SettingsStore::baseURLStringChanged, &SettingsStore::maxOutputTokensChanged})
        connect(&settings, changed, this, &AISettingsViewModel::replyLimitChanged);
    connect(&settings, &SettingsStore::baseURLStringChanged, &m_serverModels, &ServerModelsViewModel::forget);
    for (const auto changed : {&SettingsStore::baseURLStringChanged, &SettingsStore::apiKeyOriginChanged})
        connect(&settings, changed, this, &AISettingsViewModel::keyChanged);
    connect(&m_key, &StoredKey::changed, this, &AISettingsViewModel::keyChanged);
    connect(&m_key, &StoredKey::stored, this, [this] {
        finishSaving(m_keySave->origin);
        forgetTest();
    });
    connect(&m_key, &StoredKey::failed, this, [this](const ErrorPresentation &why) {
        finishSaving(m_keySave->formerOrigin);
        failTest(why);
    });
}

QString AISettingsViewModel::keyNotice() const
{
    if (m_keySave || !hasKey() || KeyOrigin::allows(m_settings))
        return {};
    const QString origin = m_settings.apiKeyOrigin();
    if (origin.isEmpty() || origin == KeyOrigin::nobody)
        return u"It is sent nowhere until you save it again."_s;
    return u"It is for %1 and is not sent anywhere else."_s.arg(origin);
}

// While the keychain is at it, nobody knows which key is in there, so none is sent anywhere.
void AISettingsViewModel::saveKey(const QString &key)
{
    const bool isRemoval = Text::trimmed(key).isEmpty();
    const QString origin = isRemoval ? KeyOrigin::nobody : BaseURL::origin(m_settings.baseURLString());
    if (m_keySave) {
        failTest({u"The former key is still on its way to the keyring."_s, u"Try again in a moment."_s});
    } else if (origin.isEmpty()) {
        failTest({u"A key is kept for one server, and the address names none that can be used."_s,
                  u"Correct the address first."_s});
    } else {
        m_keySave = KeySave{m_settings.apiKeyOrigin(), origin};
        m_settings.setApiKeyOrigin(KeyOrigin::nobody);
        m_key.save(key);
    }
}

void AISettingsViewModel::finishSaving(QString keyOrigin)
{
    m_keySave.reset();
    m_settings.setApiKeyOrigin(keyOrigin);
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

QString AISettingsViewModel::replyLimitNotice() const
{
    const std::int64_t limit = m_router.replyLimit();
    if (limit == m_settings.maxOutputTokens())
        return {};
    return u"A server nearby gets at least %1."_s.arg(QLocale().toString(qlonglong(limit)));
}

void AISettingsViewModel::test()
{
    m_findings.clear();
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
        const auto tools = self->m_settings.abilitiesEnabled() ? ConnectionTrial::Tools::tried
                                                               : ConnectionTrial::Tools::leftOut;
        ConnectionTrial::Report report = [self](ConnectionFindings::Finding finding) {
            if (self)
                self->m_findings.add(std::move(finding));
        };
        co_await ConnectionTrial::run(QPointer(&self->m_router), tools, std::move(report), stop);
        succeeded = true;
    } catch (...) {
        failure = presentationOf(std::current_exception());
    }
    if (!self || stop.stop_requested())
        co_return;
    if (succeeded)
        self->finishTest(TestState::succeeded, u"The server answered."_s, {});
    else
        self->failTest(failure);
}

void AISettingsViewModel::failTest(const ErrorPresentation &why)
{
    const QString said = why.quotation.isEmpty() ? QString() : u' ' + why.quotation;
    finishTest(TestState::failed, why.message + said, why.suggestion.value_or(QString()));
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
    m_findings.clear();
    if (m_testState != TestState::untested)
        finishTest(TestState::untested, {}, {});
}

} // namespace morvane
