#pragma once

#include "memory/MemoryStore.h"
#include "services/EventReceipts.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <variant>
#include <vector>

namespace morvane {

// What was just saved, forgotten or added to the calendar in the open chat, each until it is undone or waved
// away. GUI thread.
class ReceiptsModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")

public:
    enum Role {
        ReceiptIdRole = Qt::UserRole + 1, // text, for undo and dismiss
        NoteRole,                         // the notes' texts, or the event and its time
        IsChangeRole,                     // bool: it took the place of a former note
        ForgottenRole, // how many notes were forgotten; 0 for one that was saved, and for an event
        IsEventRole,   // bool
        IsLeavingRole, // bool: the event is being taken out
        ProblemRole,   // why the event could not be taken out; empty for none
    };

    // Both outlive this object. Without `events` there are none.
    ReceiptsModel(MemoryStore &memory, EventReceipts *events, QObject *parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    // The chat that is open, by its scope key.
    void setChat(const QString &scopeKey);

    // An id that is not there changes nothing.
    Q_INVOKABLE void undo(const QString &receiptId);
    Q_INVOKABLE void dismiss(const QString &receiptId);

private:
    using Receipt = std::variant<MemoryStore::Receipt, EventReceipts::Receipt>;

    void refresh();

    MemoryStore &m_memory;
    EventReceipts *const m_events;
    QString m_chat;
    std::vector<Receipt> m_receipts;
};

} // namespace morvane
