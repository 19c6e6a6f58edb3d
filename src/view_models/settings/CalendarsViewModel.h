#pragma once

#include "async/TaskHandle.h"
#include "services/CalendarStoring.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

#include <optional>
#include <vector>

namespace morvane {

class SettingsStore;

// Settings > Abilities: which calendar events go to, and a test whether any answers. The service is asked
// only when the person wants to know. GUI thread.
class CalendarsViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool isAvailable READ isAvailable CONSTANT)
    Q_PROPERTY(QStringList names READ names NOTIFY changed) // the default one first; empty before a test
    Q_PROPERTY(int chosen READ chosen WRITE choose NOTIFY changed)
    Q_PROPERTY(bool isTesting READ isTesting NOTIFY changed)
    Q_PROPERTY(bool worked READ worked NOTIFY changed)      // the last test
    Q_PROPERTY(QString message READ message NOTIFY changed) // what came of it; empty before one

public:
    // Both outlive this object. Without `calendars` nothing is available.
    CalendarsViewModel(SettingsStore &settings, CalendarStoring *calendars, QObject *parent = nullptr);

    [[nodiscard]] bool isAvailable() const { return m_calendars != nullptr; }
    [[nodiscard]] QStringList names() const;
    [[nodiscard]] int chosen() const; // -1 for a calendar that wasn't found
    void choose(int index);
    [[nodiscard]] bool isTesting() const { return m_isTesting; }
    [[nodiscard]] bool worked() const { return m_worked; }
    [[nodiscard]] const QString &message() const { return m_message; }

    Q_INVOKABLE void test();
    Q_INVOKABLE void cancelTest();

Q_SIGNALS:
    void changed();

private:
    using Calendars = std::optional<std::vector<CalendarStoring::Calendar>>;

    static QCoro::Task<> look(QPointer<CalendarsViewModel> self, std::stop_token stop);
    void take(const Calendars &calendars);
    void finish(bool worked, const QString &message);

    SettingsStore &m_settings;
    CalendarStoring *const m_calendars;
    std::vector<CalendarStoring::Calendar> m_found;
    bool m_isTesting = false;
    bool m_worked = false;
    QString m_message;
    TaskHandle m_test;
};

} // namespace morvane
