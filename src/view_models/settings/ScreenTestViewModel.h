#pragma once

#include "async/TaskHandle.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

#include <stop_token>

namespace morvane {

class ScreenGlancing;

// Settings > Abilities: a look at the screen that tells whether it can be read, and keeps nothing of it. GUI
// thread.
class ScreenTestViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool isOffered READ isOffered CONSTANT)
    Q_PROPERTY(bool isTesting READ isTesting NOTIFY changed)
    Q_PROPERTY(bool worked READ worked NOTIFY changed)      // the last test
    Q_PROPERTY(QString message READ message NOTIFY changed) // what came of it; empty before one

public:
    // `screen` outlives this object, and is null where there is none.
    explicit ScreenTestViewModel(ScreenGlancing *screen, QObject *parent = nullptr);

    [[nodiscard]] bool isOffered() const { return m_screen != nullptr; }
    [[nodiscard]] bool isTesting() const { return m_isTesting; }
    [[nodiscard]] bool worked() const { return m_worked; }
    [[nodiscard]] const QString &message() const { return m_message; }

    // Ends the test when one runs.
    Q_INVOKABLE void test();

Q_SIGNALS:
    void changed();

private:
    static QCoro::Task<> look(QPointer<ScreenTestViewModel> self, std::stop_token stop);
    void finish(bool worked, const QString &message);

    ScreenGlancing *m_screen;
    bool m_isTesting = false;
    bool m_worked = false;
    QString m_message;
    TaskHandle m_test;
};

} // namespace morvane
