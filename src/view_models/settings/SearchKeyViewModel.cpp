#include "view_models/settings/SearchKeyViewModel.h"

#include "utils/text/UserPresentableError.h"

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString wordsOf(const ErrorPresentation &words)
{
    return words.suggestion ? words.message + u' ' + *words.suggestion : words.message;
}

} // namespace

SearchKeyViewModel::SearchKeyViewModel(KeychainServicing &keychain, QString account, Tester tester,
                                       Work &work, QObject *parent)
    : QObject(parent)
    , m_key(keychain, std::move(account), work)
    , m_tester(std::move(tester))
{
    connect(&m_key, &StoredKey::stored, this, &SearchKeyViewModel::cancelTest);
    connect(&m_key, &StoredKey::failed, this, [this](const ErrorPresentation &why) {
        m_test = {};
        finish(false, wordsOf(why));
    });
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
        QString key = self->m_key.value();
        co_await self->m_tester(std::move(key), stop);
    } catch (...) {
        failure = wordsOf(presentationOf(std::current_exception()));
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
