#include "persistence/RecordTables.h"

namespace morvane {

namespace {

// Reads the next column as what a field holds.
struct Reader {
    Statement &row;

    void operator()(QString &field) const { field = row.text(); }
    void operator()(QDateTime &field) const { field = row.date(); }
    void operator()(std::int64_t &field) const { field = row.integer(); }
    void operator()(bool &field) const { field = row.flag(); }
    void operator()(std::optional<QString> &field) const { field = row.optionalText(); }
    void operator()(std::optional<QUuid> &field) const { field = row.optionalId(); }
    void operator()(std::optional<bool> &field) const { field = row.optionalFlag(); }
    void operator()(std::optional<QStringList> &field) const { field = row.optionalList(); }
};

template <typename Row, typename Value>
void readColumn(Statement &statement, Row &row, const RecordColumn<Row, Value> &column)
{
    if constexpr (std::is_same_v<Value, QString>) {
        if (column.sharedTexts) {
            row.*column.field = statement.text(column.sharedTexts());
            return;
        }
    }
    Reader{statement}(row.*column.field);
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
