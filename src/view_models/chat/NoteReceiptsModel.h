#pragma once

#include "memory/MemoryStore.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace morvane {

// What was just saved or forgotten in the open chat, each until it is undone or waved away. GUI thread.
class NoteReceiptsModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")

public:
    enum Role {
        ReceiptIdRole = Qt::UserRole + 1, // text, for undo and dismiss
        NoteRole,
        IsChangeRole,  // bool: it took the place of a former note
        ForgottenRole, // how many notes were forgotten; 0 for one that was saved
    };

    // `memory` outlives this object.
    explicit NoteReceiptsModel(MemoryStore &memory, QObject *parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    // The chat that is open, by its scope key.
    void setChat(const QString &scopeKey);

    // An id that is not there changes nothing.
    Q_INVOKABLE void undo(const QString &receiptId);
    Q_INVOKABLE void dismiss(const QString &receiptId);

private:
    void refresh();

    MemoryStore &m_memory;
    QString m_chat;
    std::vector<MemoryStore::Receipt> m_receipts;
};

} // namespace morvane
