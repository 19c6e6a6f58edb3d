#include "view_models/settings/SearchKeyViewModel.h"

#include "security/KeychainError.h"
#include "security/KeychainServicing.h"
#include "security/KeychainTasks.h"
#include "utils/bytes/SecretBytes.h"
#include "utils/text/Text.h"
#include "utils/text/UserPresentableError.h"

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString wordsOf(const std::exception_ptr &error)
{
    const ErrorPresentation words = presentationOf(error);
    return words.suggestion ? words.message + u' ' + *words.suggestion : words.message;
}

} // namespace

SearchKeyViewModel::SearchKeyViewModel(KeychainServicing &keychain, QString account, Tester tester,
                                       QObject *parent)
    : QObject(parent)
    , m_keychain(keychain)
    , m_account(std::move(account))
    , m_tester(std::move(tester))
{}

bool SearchKeyViewModel::hasKey() const
{
    try {
        return !m_keychain.read(m_account).value_or(QString()).isEmpty();
    } catch (const KeychainError &) {
        return false;
    }
}

void SearchKeyViewModel::save(const QString &key)
{
    m_saving = TaskHandle::start(
        [this, key = Text::trimmed(key)](std::stop_token) { return store(QPointer(this), key); });
}

QCoro::Task<> SearchKeyViewModel::store(QPointer<SearchKeyViewModel> self, QString key)
{
    QString failure;
    try {
        if (key.isEmpty())
            co_await KeychainTasks::remove(&self->m_keychain, self->m_account);
        else
            co_await KeychainTasks::save(&self->m_keychain, key, self->m_account);
    } catch (...) {
        failure = wordsOf(std::current_exception());
    }
    wipe(key);
    if (self) {
        self->m_test = {};
        self->finish(false, failure);
    }
}

void SearchKeyViewModel::test()
{
    m_isTesting = true;
    Q_EMIT changed();
    m_test =
        TaskHandle::start([this](std::stop_token stop) { return runTest(QPointer(this), std::move(stop)); });
}

void SearchKeyViewModel::cancelTest()
{
    m_test = {};
    finish(false, {});
}

QCoro::Task<> SearchKeyViewModel::runTest(QPointer<SearchKeyViewModel> self, std::stop_token stop)
{
    QString failure;
    try {
        QString key = self->m_keychain.read(self->m_account).value_or(QString());
        co_await self->m_tester(std::move(key), stop);
    } catch (...) {
        failure = wordsOf(std::current_exception());
    }
    if (self && !stop.stop_requested())
        self->finish(failure.isEmpty(), failure.isEmpty() ? u"The key works."_s : failure);
}

void SearchKeyViewModel::finish(bool worked, const QString &message)
{
    m_isTesting = false;
    m_worked = worked;
    m_message = message;
    Q_EMIT changed();
}

} // namespace morvane
