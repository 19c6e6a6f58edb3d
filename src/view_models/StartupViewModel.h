#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace morvane {

// What the small window says that stands while the key to the person's data is being fetched.
class StartupViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(QString productName READ productName CONSTANT)
    Q_PROPERTY(QString sentence READ sentence NOTIFY changed)
    Q_PROPERTY(bool canRetry READ canRetry NOTIFY changed)
    Q_PROPERTY(bool canUseFile READ canUseFile NOTIFY changed)
    Q_PROPERTY(bool canStartAfresh READ canStartAfresh NOTIFY changed)
    // What starting afresh would do, while the person is asked whether they mean it; empty otherwise.
    Q_PROPERTY(QString question READ question NOTIFY changed)

public:
    // The ways on that a moment of the start offers, besides waiting and quitting.
    struct Ways {
        bool retry = false;
        bool useFile = false;     // for the key, in place of the keyring
        bool startAfresh = false; // with the old data put aside
        QString startAfreshQuestion;
    };

    using QObject::QObject;

    [[nodiscard]] QString productName() const;
    [[nodiscard]] const QString &sentence() const { return m_sentence; }
    [[nodiscard]] bool canRetry() const { return m_ways.retry; }
    [[nodiscard]] bool canUseFile() const { return m_ways.useFile; }
    [[nodiscard]] bool canStartAfresh() const { return m_ways.startAfresh; }
    [[nodiscard]] QString question() const;
    void show(const QString &sentence, const Ways &ways);

    Q_INVOKABLE void retry();
    Q_INVOKABLE void useFile();
    // Asks first.
    Q_INVOKABLE void startAfresh();
    Q_INVOKABLE void answerQuestion(bool yes);

Q_SIGNALS:
    void changed();
    void retryChosen();
    void fileChosen();
    void afreshChosen();

private:
    QString m_sentence;
    Ways m_ways;
    bool m_isAsking = false;
};

} // namespace morvane
