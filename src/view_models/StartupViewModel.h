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

public:
    using QObject::QObject;

    [[nodiscard]] QString productName() const;
    [[nodiscard]] const QString &sentence() const { return m_sentence; }
    [[nodiscard]] bool canRetry() const { return m_canRetry; }
    void show(const QString &sentence, bool canRetry);

    Q_INVOKABLE void retry();

Q_SIGNALS:
    void changed();
    void retryChosen();

private:
    QString m_sentence;
    bool m_canRetry = false;
};

} // namespace morvane
