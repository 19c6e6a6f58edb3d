#pragma once

#include "async/TaskHandle.h"
#include "view_models/settings/StoredKey.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <stop_token>

namespace morvane {

class KeychainServicing;
class Work;

// The person's own key for searching the web, and a search that tries it. GUI thread.
class SearchKeyViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool hasKey READ hasKey NOTIFY changed)
    Q_PROPERTY(bool isTesting READ isTesting NOTIFY changed)
    Q_PROPERTY(bool worked READ worked NOTIFY changed)      // the last test
    Q_PROPERTY(QString message READ message NOTIFY changed) // what came of it; empty before one

public:
    // Runs a search with the key; throws when it is not taken.
    using Tester = std::function<QCoro::Task<>(QString key, std::stop_token stop)>;

    // The keychain outlives this object.
    SearchKeyViewModel(KeychainServicing &keychain, QString account, Tester tester, Work &work,
                       QObject *parent = nullptr);

    [[nodiscard]] bool hasKey() const { return m_key.exists(); }
    [[nodiscard]] bool isTesting() const { return m_isTesting; }
    [[nodiscard]] bool worked() const { return m_worked; }
    [[nodiscard]] const QString &message() const { return m_message; }

    // The empty text removes the key.
    Q_INVOKABLE void save(const QString &key) { m_key.save(key); }
    // Tries the key that is saved.
    Q_INVOKABLE void test();
    Q_INVOKABLE void cancelTest();

Q_SIGNALS:
    void changed();

private:
    static QCoro::Task<> runTest(QPointer<SearchKeyViewModel> self, std::stop_token stop);
    void finish(bool worked, const QString &message);

    StoredKey m_key;
    Tester m_tester;
    bool m_isTesting = false;
    bool m_worked = false;
    QString m_message;
    TaskHandle m_test;
};

} // namespace morvane
