#pragma once

#include "async/Work.h"
#include "security/KeychainHome.h"
#include "security/KeychainService.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>

#include <functional>
#include <stop_token>

namespace morvane {

// Opens the keychain with the window already up: the waiting happens beside the GUI thread, and the state
// tells the window what is being waited for. The stores are opened after it.
//
// GUI thread. Destroying it ends the wait.
class KeychainPreparation final : public QObject {
    Q_OBJECT

public:
    // `home` and `keychain` outlive the end of `work`. `service` is the name the secrets stand under.
    KeychainPreparation(QString service, KeychainHome &home, KeychainService &keychain, Work &work);
    ~KeychainPreparation() override;

    [[nodiscard]] KeychainState state() const { return m_state; }

    // Ends in a state that is neither Opening nor WaitingForUnlock. When that state is ready, every secret
    // that takes no prompt is in the keychain's cache. May be called again for a retry, once the former call
    // has ended. Throws CancelledError once `stop` is triggered or this object is gone.
    QCoro::Task<KeychainOpening> prepare(KeyExpectation expectation, std::stop_token stop = {});

    // The same with the private file, as the person chose.
    QCoro::Task<KeychainOpening> prepareInFile(std::stop_token stop = {});

Q_SIGNALS:
    void stateChanged(KeychainState state);

private:
    using Openings = Work::Results<KeychainOpening>;
    using Report = Work::Report<KeychainOpening>;
    using Open = std::function<KeychainOpening(const Report &, const std::stop_token &)>;

    QCoro::Task<KeychainOpening> start(Open open, std::stop_token stop);
    static QCoro::Task<KeychainOpening> follow(QPointer<KeychainPreparation> self, Openings openings,
                                               std::stop_token stop, std::stop_token gone);
    void setState(KeychainState state);

    const QString m_service;
    KeychainHome &m_home;
    KeychainService &m_keychain;
    Work &m_work;
    KeychainState m_state = KeychainState::Opening;
    std::stop_source m_gone;
};

} // namespace morvane
