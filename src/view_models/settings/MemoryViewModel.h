#pragma once

#include "memory/MemoryStore.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace morvane {

// Settings > Memory: what the assistant keeps about the person, latest first. GUI thread.
class MemoryViewModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(int count READ countNow NOTIFY countChanged)
    // Why the notes can't be read or changed; empty when they can.
    Q_PROPERTY(QString problem READ problem NOTIFY problemChanged)

public:
    enum Role {
        FactIdRole = Qt::UserRole + 1, // text
        NoteRole,
    };

    // `memory` outlives this object.
    explicit MemoryViewModel(MemoryStore &memory, QObject *parent = nullptr);

    [[nodiscard]] QString problem() const;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    // An empty text changes nothing.
    Q_INVOKABLE void update(const QString &factId, const QString &text);
    Q_INVOKABLE void remove(const QString &factId);
    // Every note goes, and with them those in a file that can't be opened.
    Q_INVOKABLE void clear();

Q_SIGNALS:
    void countChanged();
    void problemChanged();

private:
    [[nodiscard]] int countNow() const { return rowCount(); }
    void refresh();

    MemoryStore &m_memory;
    std::vector<MemoryStore::Fact> m_facts; // oldest first
};

} // namespace morvane
