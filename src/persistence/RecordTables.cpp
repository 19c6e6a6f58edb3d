#include "persistence/RecordTables.h"

namespace morvane {

namespace {

void read(Statement &row, QString &field)
{
    field = row.text();
}

void read(Statement &row, QDateTime &field)
{
    field = row.date();
}

void read(Statement &row, std::int64_t &field)
{
    field = row.integer();
}

void read(Statement &row, bool &field)
{
    field = row.flag();
}

void read(Statement &row, std::optional<QString> &field)
{
    field = row.optionalText();
}

void read(Statement &row, std::optional<QUuid> &field)
{
    field = row.optionalId();
}

void read(Statement &row, std::optional<bool> &field)
{
    field = row.optionalFlag();
}

void read(Statement &row, std::optional<QStringList> &field)
{
    field = row.optionalList();
}

template <typename Row, typename Value>
void readColumn(Statement &statement, Row &row, const RecordColumn<Row, Value> &column)
{
    if constexpr (std::is_same_v<Value, QString>) {
        if (column.sharedTexts) {
            row.*column.field = statement.text(column.sharedTexts());
            return;
        }
    }
    read(statement, row.*column.field);
}

} // namespace

template <typename R>
typename R::Columns readRow(const QUuid &id, Statement &row)
{
    typename R::Columns columns;
    columns.id = id;
    std::apply([&](const auto &, const auto &...column) { (readColumn(row, columns, column), ...); },
               RecordTable<R>::columns);
    return columns;
}

template <typename R>
void bindRow(Statement &statement, const typename R::Columns &columns)
{
    forEachColumn<R>([&](const auto &column) { statement.bind(SqlCoding::value(columns.*column.field)); });
}

template Conversation::Columns readRow<Conversation>(const QUuid &, Statement &);
template ChatMessage::Columns readRow<ChatMessage>(const QUuid &, Statement &);
template ImportedDocument::Columns readRow<ImportedDocument>(const QUuid &, Statement &);
template void bindRow<Conversation>(Statement &, const Conversation::Columns &);
template void bindRow<ChatMessage>(Statement &, const ChatMessage::Columns &);
template void bindRow<ImportedDocument>(Statement &, const ImportedDocument::Columns &);

} // namespace morvane
