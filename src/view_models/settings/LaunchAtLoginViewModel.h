#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace morvane {

class LaunchAtLoginService;

// The switch of Settings > Appearance. GUI thread.
class LaunchAtLoginViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool isOffered READ isOffered CONSTANT)
    Q_PROPERTY(bool isEnabled READ isEnabled NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY changed) // why it could not be changed; empty for none

public:
    // Without a service nothing is offered; it outlives this object.
    explicit LaunchAtLoginViewModel(LaunchAtLoginService *service, QObject *parent = nullptr);

    [[nodiscard]] bool isOffered() const { return m_service != nullptr; }
    [[nodiscard]] bool isEnabled() const;
    [[nodiscard]] QString message() const;
    Q_INVOKABLE void setEnabled(bool on);
    // The page is opened: somebody may have changed it where nobody watched.
    Q_INVOKABLE void look() { Q_EMIT changed(); }

Q_SIGNALS:
    void changed();

private:
    LaunchAtLoginService *const m_service;
};

} // namespace morvane
