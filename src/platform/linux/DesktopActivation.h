#pragma once

#include "view_models/AppRequest.h"

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <optional>

namespace morvane {

// The application as the desktop starts and calls it: org.freedesktop.Application under the name of its
// desktop entry. The actions are those of the entry, "new-chat" and "new-ghost-chat", and for notifications
// and other programs "open-chat" with the id of a chat and "ask" with words.
//
// Any program of the account may call it, so what it asks for is bounded, and words are put into the
// composer and never sent. GUI thread.
class DesktopActivation : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    static constexpr qsizetype mostFiles = 100;
    static constexpr qsizetype mostCharacters = 100'000;

    // Takes the name on this bus until it goes; nothing without a bus, or where another program has the name.
    explicit DesktopActivation(std::optional<QDBusConnection> bus, QObject *parent = nullptr);
    ~DesktopActivation() override;

public Q_SLOTS:
    // These are the methods of the interface. `platformData` may carry the token with which the desktop lets
    // a window come to the front.
    void Activate(const QVariantMap &platformData);
    void Open(const QStringList &addresses, const QVariantMap &platformData);
    void ActivateAction(const QString &name, const QVariantList &parameter, const QVariantMap &platformData);

Q_SIGNALS:
    void asked(const morvane::AppRequest &request);

private:
    std::optional<QDBusConnection> m_bus;
};

} // namespace morvane
