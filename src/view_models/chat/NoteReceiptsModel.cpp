#include "view_models/chat/NoteReceiptsModel.h"

#include "utils/text/Identifier.h"

namespace morvane {

NoteReceiptsModel::NoteReceiptsModel(MemoryStore &memory, QObject *parent)
    : QAbstractListModel(parent)
    , m_memory(memory)
{
    refresh();
    connect(&memory, &MemoryStore::receiptsChanged, this, &NoteReceiptsModel::refresh);
}

void NoteReceiptsModel::setChat(const QString &scopeKey)
{
    if (m_chat == scopeKey)
        return;
    m_chat = scopeKey;
    refresh();
}

void NoteReceiptsModel::refresh()
{
    beginResetModel();
    m_receipts = m_memory.receipts();
    std::erase_if(m_receipts,
                  [this](const auto &each) { return !each.chat.isEmpty() && each.chat != m_chat; });
    endResetModel();
}

int NoteReceiptsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_receipts.size());
}

QHash<int, QByteArray> NoteReceiptsModel::roleNames() const
{
    return {{ReceiptIdRole, "receiptId"},
            {NoteRole, "note"},
            {IsChangeRole, "isChange"},
            {ForgottenRole, "forgotten"}};
}

QVariant NoteReceiptsModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const MemoryStore::Receipt &receipt = m_receipts[static_cast<std::size_t>(index.row())];
    switch (role) {
    case ReceiptIdRole:
        return Identifier::text(receipt.id);
    case NoteRole:
        return receipt.text;
    case IsChangeRole:
        return receipt.previousText.has_value();
    case ForgottenRole:
        return static_cast<int>(receipt.forgotten.size());
    default:
        return {};
    }
}

void NoteReceiptsModel::undo(const QString &receiptId)
{
    m_memory.undo(QUuid::fromString(receiptId));
}

void NoteReceiptsModel::dismiss(const QString &receiptId)
{
    m_memory.dismiss(QUuid::fromString(receiptId));
}

} // namespace morvane
