#pragma once

#include "async/TaskHandle.h"
#include "utils/text/UserPresentableError.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QString>

namespace morvane {

class KeychainServicing;
class Work;

// One key of the person's in the keychain. It is written and removed off this thread, and never goes back to
// the window. GUI thread.
class StoredKey : public QObject {
    Q_OBJECT
public:
    // The keychain outlives the end of `work`, which outlives this object.
    StoredKey(KeychainServicing &keychain, QString account, Work &work, QObject *parent = nullptr);

    // False as well while the keychain refuses.
    [[nodiscard]] bool exists() const;

    // Empty for none; throws KeychainError. For whoever has to use it.
    [[nodiscard]] QString value() const;

    // Without the blanks around it; an empty one removes the key.
    void save(const QString &key);

Q_SIGNALS:
    // Each save ends in one of these, and then in changed().
    void stored();
    void failed(const ErrorPresentation &why);
    void changed();

private:
    static QCoro::Task<> store(QPointer<StoredKey> self, Work *work, KeychainServicing *keychain,
                               QString account, QString key);

    KeychainServicing &m_keychain;
    QString m_account;
    Work &m_work;
    TaskHandle m_saving;
};

} // namespace morvane
