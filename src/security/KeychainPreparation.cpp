#include "security/KeychainPreparation.h"

#include "async/CancelledError.h"
#include "security/KeychainError.h"

#include <utility>

namespace morvane {

namespace {

// Beside the GUI thread.
template <typename Open>
KeychainOpening opened(KeychainService &keychain, Open open)
{
    KeychainOpening opening{KeychainState::Unavailable};
    try {
        opening = open();
        if (isReady(opening.state))
            keychain.warmUp();
    } catch (const CancelledError &) {
        throw;
    } catch (const KeychainError &) {
        // Open, but it would not be listed: each secret is read when it is needed.
    } catch (const std::exception &) {
        opening = {KeychainState::Unavailable};
    }
    return opening;
}

} // namespace

KeychainPreparation::KeychainPreparation(QString service, KeychainHome &home, KeychainService &keychain,
                                         Work &work)
    : m_service(std::move(service))
    , m_home(home)
    , m_keychain(keychain)
    , m_work(work)
{}

KeychainPreparation::~KeychainPreparation()
{
    m_gone.request_stop();
}

QCoro::Task<KeychainOpening> KeychainPreparation::prepare(KeyExpectation expectation, std::stop_token stop)
{
    const auto open = [service = m_service, &home = m_home, expectation](const Report &report,
                                                                         const std::stop_token &stopped) {
        return home.open(
            service, expectation, [&report](KeychainState state) { report({state}); }, stopped);
    };
    return start(open, std::move(stop));
}

QCoro::Task<KeychainOpening> KeychainPreparation::prepareInFile(std::stop_token stop)
{
    const auto open = [service = m_service, &home = m_home](const Report &, const std::stop_token &) {
        return home.openInFile(service);
    };
    return start(open, std::move(stop));
}

QCoro::Task<KeychainOpening> KeychainPreparation::start(Open open, std::stop_token stop)
{
    setState(KeychainState::Opening);
    auto openings = m_work.start<KeychainOpening>(
        [open, &keychain = m_keychain](const Report &report, const std::stop_token &stopped) {
            report(opened(keychain, [&] { return open(report, stopped); }));
        });
    return follow(this, std::move(openings), std::move(stop), m_gone.get_token());
}

QCoro::Task<KeychainOpening> KeychainPreparation::follow(QPointer<KeychainPreparation> self,
                                                         Openings openings, std::stop_token stop,
                                                         std::stop_token gone)
{
    std::stop_source either;
    const auto request = [either]() mutable { either.request_stop(); };
    const std::stop_callback onStop(stop, request);
    const std::stop_callback onGone(gone, request);
    while (const auto opening = co_await openings.next(either.get_token())) {
        if (self)
            self->setState(opening->state);
        if (opening->state != KeychainState::WaitingForUnlock)
            co_return *opening;
    }
    throw CancelledError();
}

void KeychainPreparation::setState(KeychainState state)
{
    if (std::exchange(m_state, state) != state)
        Q_EMIT stateChanged(state);
}

} // namespace morvane
