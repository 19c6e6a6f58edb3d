#pragma once

#include "async/TaskHandle.h"
#include "services/LinkOpening.h"
#include "services/ShortcutRunning.h"

#include <QAbstractListModel>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace morvane {

// Settings > Abilities: the shortcuts in their folder, and the way to it. GUI thread.
class ShortcutListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool isAvailable READ isAvailable CONSTANT)
    Q_PROPERTY(QString folder READ folder CONSTANT)
    Q_PROPERTY(QString example READ example CONSTANT)
    Q_PROPERTY(int count READ count NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY changed) // what went wrong; empty for nothing

public:
    enum Role {
        NameRole = Qt::UserRole + 1,
        CommentRole, // what it says of itself, or why it isn't run
        RefusedRole, // bool
    };

    // What the desktop has; both outlive the model. Null where it has none.
    struct Ports {
        ShortcutRunning *shortcuts = nullptr;
        LinkOpening *links = nullptr;
    };

    ShortcutListModel(Ports ports, QString folder, QObject *parent = nullptr);

    [[nodiscard]] bool isAvailable() const { return m_ports.shortcuts && m_ports.links; }
    [[nodiscard]] const QString &folder() const { return m_folder; }
    [[nodiscard]] static QString example();
    [[nodiscard]] int count() const { return static_cast<int>(m_shortcuts.size()); }
    [[nodiscard]] const QString &message() const { return m_message; }

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    Q_INVOKABLE void refresh();
    // Makes it first where there is none.
    Q_INVOKABLE void openFolder();

Q_SIGNALS:
    void changed();

private:
    static QCoro::Task<> look(QPointer<ShortcutListModel> self, std::stop_token stop);
    static QCoro::Task<> open(QPointer<ShortcutListModel> self, std::stop_token stop);
    void take(std::vector<ShortcutRunning::Shortcut> shortcuts, const QString &message);

    const Ports m_ports;
    const QString m_folder;
    std::vector<ShortcutRunning::Shortcut> m_shortcuts;
    QString m_message;
    TaskHandle m_looking;
    TaskHandle m_opening;
};

} // namespace morvane
