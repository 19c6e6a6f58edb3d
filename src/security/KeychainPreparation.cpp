#include "security/KeychainPreparation.h"

#include "async/CancelledError.h"
#include "security/KeychainError.h"

#include <utility>

namespace morvane {

KeychainPreparation::KeychainPreparation(QString service, KeychainHome &home, KeychainService &keychain)
    : m_service(std::move(service))
    , m_home(home)
    , m_keychain(keychain)
{}

KeychainPreparation::~KeychainPreparation()
{
    m_worker = {}; // stops and joins while this object is still whole
}

QCoro::Task<KeychainOpening> KeychainPreparation::prepare(KeyExpectation expectation, std::stop_token stop)
{
    m_worker = {};
    auto [openings, producer] = Openings::make();
    m_openings = std::move(producer);
    setState(KeychainState::Opening);
    m_worker = std::jthread(
        [this, expectation](const std::stop_token &workerStop) { work(expectation, workerStop); });
    return follow(this, std::move(openings), std::move(stop));
}

QCoro::Task<KeychainOpening> KeychainPreparation::follow(QPointer<KeychainPreparation> self,
                                                         Openings openings, std::stop_token stop)
{
    try {
        while (const auto opening = co_await openings.next(stop)) {
            if (!self)
                break;
            self->setState(opening->state);
            if (opening->state != KeychainState::WaitingForUnlock)
                co_return *opening;
        }
    } catch (const CancelledError &) {
        if (self)
            self->m_worker.request_stop();
        throw;
    }
    throw CancelledError();
}

// On the worker's thread.
void KeychainPreparation::work(KeyExpectation expectation, const std::stop_token &stop)
{
    KeychainOpening opening{KeychainState::Unavailable};
    try {
        opening = m_home.open(
            m_service, expectation, [this](KeychainState state) { report({state}); }, stop);
        if (isReady(opening.state))
            m_keychain.warmUp();
    } catch (const CancelledError &) {
        return; // whoever stopped it does not wait for an answer
    } catch (const KeychainError &) {
        // Open, but it would not be listed: each secret is read when it is needed.
    } catch (const std::exception &) {
        opening = {KeychainState::Unavailable};
    }
    report(opening);
}

void KeychainPreparation::report(const KeychainOpening &opening)
{
    QMetaObject::invokeMethod(
        this, [this, opening] { m_openings->yield(opening); }, Qt::QueuedConnection);
}

void KeychainPreparation::setState(KeychainState state)
{
    if (std::exchange(m_state, state) != state)
        Q_EMIT stateChanged(state);
}

} // namespace morvane
