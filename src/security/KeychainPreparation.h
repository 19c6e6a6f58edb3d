#pragma once

#include "security/KeychainHome.h"
#include "security/KeychainService.h"

#include "async/AsyncStream.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>

#include <optional>
#include <stop_token>
#include <thread>

namespace morvane {

// Opens the keychain with the window already up: the waiting happens on a thread of its own, and the state
// tells the window what is being waited for. The stores are opened after it.
//
// GUI thread. Destroying it ends the wait.
class KeychainPreparation final : public QObject {
    Q_OBJECT

public:
    // Both outlive this object. `service` is the name the secrets stand under.
    KeychainPreparation(QString service, KeychainHome &home, KeychainService &keychain);
    ~KeychainPreparation() override;

    [[nodiscard]] KeychainState state() const { return m_state; }

    // Ends in a state that is neither Opening nor WaitingForUnlock. When that state is ready, every secret
    // that takes no prompt is in the keychain's cache. May be called again for a retry, once the former call
    // has ended. Throws CancelledError once `stop` is triggered or this object is gone.
    QCoro::Task<KeychainOpening> prepare(KeyExpectation expectation, std::stop_token stop = {});

Q_SIGNALS:
    void stateChanged(KeychainState state);

private:
    using Openings = AsyncStream<KeychainOpening>;

    static QCoro::Task<KeychainOpening> follow(QPointer<KeychainPreparation> self, Openings openings,
                                               std::stop_token stop);
    void work(KeyExpectation expectation, const std::stop_token &stop);
    void report(const KeychainOpening &opening);
    void setState(KeychainState state);

    const QString m_service;
    KeychainHome &m_home;
    KeychainService &m_keychain;
    KeychainState m_state = KeychainState::Opening;
    std::optional<Openings::Producer> m_openings;
    std::jthread m_worker;
};

} // namespace morvane
