#include "view_models/chat/ReceiptsModel.h"

#include "utils/text/Identifier.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QVariant of(const MemoryStore::Receipt &receipt, int role)
{
    switch (role) {
    case ReceiptsModel::ReceiptIdRole:
        return Identifier::text(receipt.id);
    case ReceiptsModel::NoteRole:
        return receipt.text;
    case ReceiptsModel::IsChangeRole:
        return receipt.previousText.has_value();
    case ReceiptsModel::ForgottenRole:
        return static_cast<int>(receipt.forgotten.size());
    case ReceiptsModel::IsEventRole:
    case ReceiptsModel::IsLeavingRole:
        return false;
    case ReceiptsModel::ProblemRole:
        return QString();
    default:
        return {};
    }
}

QVariant of(const EventReceipts::Receipt &receipt, int role)
{
    switch (role) {
    case ReceiptsModel::ReceiptIdRole:
        return Identifier::text(receipt.id);
    case ReceiptsModel::NoteRole:
        return QString(receipt.title + u" · "_s + receipt.when);
    case ReceiptsModel::IsChangeRole:
        return false;
    case ReceiptsModel::ForgottenRole:
        return 0;
    case ReceiptsModel::IsEventRole:
        return true;
    case ReceiptsModel::IsLeavingRole:
        return receipt.isLeaving;
    case ReceiptsModel::ProblemRole:
        return receipt.problem;
    default:
        return {};
    }
}

} // namespace

ReceiptsModel::ReceiptsModel(MemoryStore &memory, EventReceipts *events, QObject *parent)
    : QAbstractListModel(parent)
    , m_memory(memory)
    , m_events(events)
{
    refresh();
    connect(&memory, &MemoryStore::receiptsChanged, this, &ReceiptsModel::refresh);
    if (events)
        connect(events, &EventReceipts::changed, this, &ReceiptsModel::refresh);
}

void ReceiptsModel::setChat(const QString &scopeKey)
{
    if (m_chat == scopeKey)
        return;
    m_chat = scopeKey;
    refresh();
}

void ReceiptsModel::refresh()
{
    const auto take = [this](const auto &receipts) {
        for (const auto &each : receipts)
            if (each.chat.isEmpty() || each.chat == m_chat)
                m_receipts.emplace_back(each);
    };
    beginResetModel();
    m_receipts.clear();
    take(m_memory.receipts());
    if (m_events)
        take(m_events->receipts());
    endResetModel();
}

int ReceiptsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_receipts.size());
}

QHash<int, QByteArray> ReceiptsModel::roleNames() const
{
    return {{ReceiptIdRole, "receiptId"}, {NoteRole, "note"},       {IsChangeRole, "isChange"},
            {ForgottenRole, "forgotten"}, {IsEventRole, "isEvent"}, {IsLeavingRole, "isLeaving"},
            {ProblemRole, "problem"}};
}

QVariant ReceiptsModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    return std::visit([role](const auto &receipt) { return of(receipt, role); },
                      m_receipts[static_cast<std::size_t>(index.row())]);
}

// An id is in one of the two at most.
void ReceiptsModel::undo(const QString &receiptId)
{
    const QUuid id = QUuid::fromString(receiptId);
    m_memory.undo(id);
    if (m_events)
        m_events->undo(id);
}

void ReceiptsModel::dismiss(const QString &receiptId)
{
    const QUuid id = QUuid::fromString(receiptId);
    m_memory.dismiss(id);
    if (m_events)
        m_events->dismiss(id);
}

} // namespace morvane
