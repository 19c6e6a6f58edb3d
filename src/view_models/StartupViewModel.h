#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
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
    Q_PROPERTY(bool canProceed READ canProceed NOTIFY changed)
    // What the person should know before they go on, a paragraph each.
    Q_PROPERTY(QStringList report READ report NOTIFY changed)
    // What starting afresh would do, while the person is asked whether they mean it; empty otherwise.
    Q_PROPERTY(QString question READ question NOTIFY changed)

public:
    // The ways on that a moment of the start offers, besides waiting and quitting.
    struct Ways {
        bool retry = false;
        bool useFile = false;     // for the key, in place of the keyring
        bool startAfresh = false; // with the old data put aside
        QString startAfreshQuestion;
        bool proceed = false; // there is nothing but to go on
        QStringList report;
    };

    using QObject::QObject;

    [[nodiscard]] QString productName() const;
    [[nodiscard]] const QString &sentence() const { return m_sentence; }
    [[nodiscard]] bool canRetry() const { return m_ways.retry; }
    [[nodiscard]] bool canUseFile() const { return m_ways.useFile; }
    [[nodiscard]] bool canStartAfresh() const { return m_ways.startAfresh; }
    [[nodiscard]] bool canProceed() const { return m_ways.proceed; }
    [[nodiscard]] const QStringList &report() const { return m_ways.report; }
    [[nodiscard]] QString question() const;
    void show(const QString &sentence, const Ways &ways);

    Q_INVOKABLE void retry();
    Q_INVOKABLE void useFile();
    Q_INVOKABLE void proceed();
    // Asks first.
    Q_INVOKABLE void startAfresh();
    Q_INVOKABLE void answerQuestion(bool yes);

Q_SIGNALS:
    void changed();
    void retryChosen();
    void fileChosen();
    void proceedChosen();
    void afreshChosen();

private:
    QString m_sentence;
    Ways m_ways;
    bool m_isAsking = false;
};

} // namespace morvane
