#include "FakeViewModels.h"

#include <QUrl>

namespace morvane {

using namespace Qt::StringLiterals;

FakeRows::FakeRows(QList<QByteArray> roles, QObject *parent)
    : QAbstractListModel(parent)
    , m_roles(std::move(roles))
{}

int FakeRows::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant FakeRows::data(const QModelIndex &index, int role) const
{
    return m_rows.at(index.row()).value(QString::fromLatin1(m_roles.at(role - Qt::UserRole)));
}

QHash<int, QByteArray> FakeRows::roleNames() const
{
    QHash<int, QByteArray> names;
    for (int i = 0; i < m_roles.size(); ++i)
        names.insert(Qt::UserRole + i, m_roles.at(i));
    return names;
}

void FakeRows::append(const QVariantMap &row)
{
    beginInsertRows({}, count(), count());
    m_rows.append(row);
    endInsertRows();
    Q_EMIT countChanged();
}

void FakeRows::set(int row, const QByteArray &role, const QVariant &value)
{
    m_rows[row][QString::fromLatin1(role)] = value;
    Q_EMIT dataChanged(index(row), index(row), {static_cast<int>(Qt::UserRole + m_roles.indexOf(role))});
}

void FakeRows::clear()
{
    beginResetModel();
    m_rows.clear();
    endResetModel();
    Q_EMIT countChanged();
}

FakeMessageList::FakeMessageList(QObject *parent)
    : FakeRows({"messageId", "isUser", "text", "failed", "cancelled", "interrupted", "running",
                "indicatorText", "errorText", "toolLines", "sources", "attachmentName", "canContinue",
                "place"},
               parent)
{}

void FakeMessageList::addUser(const QString &text)
{
    addReply(text, {{u"isUser"_s, true}});
}

void FakeMessageList::addReply(const QString &text, const QVariantMap &more)
{
    QVariantMap row{{u"messageId"_s, u"m%1"_s.arg(count())},
                    {u"isUser"_s, false},
                    {u"text"_s, text},
                    {u"failed"_s, false},
                    {u"cancelled"_s, false},
                    {u"interrupted"_s, false},
                    {u"running"_s, false},
                    {u"indicatorText"_s, QString()},
                    {u"errorText"_s, QString()},
                    {u"toolLines"_s, QStringList()},
                    {u"sources"_s, QStringList()},
                    {u"attachmentName"_s, QString()},
                    {u"canContinue"_s, false},
                    {u"place"_s, QString()}};
    row.insert(more);
    append(row);
}

FakeConversationList::FakeConversationList(QObject *parent)
    : FakeRows({"conversationId", "title", "section"}, parent)
{}

QString FakeConversationList::neighbour(const QString &id, int step)
{
    return id + QString::number(step);
}

FakeSearch::FakeSearch(QObject *parent)
    : FakeRows({"conversationId", "title", "excerpt", "section"}, parent)
{}

void FakeSearch::setQuery(const QString &query)
{
    m_query = query;
    Q_EMIT queryChanged();
}

void FakeServerModels::fetch()
{
    isFetching = true;
    Q_EMIT changed();
}

void FakeServerModels::answer(const QStringList &models, const QString &why)
{
    isFetching = false;
    names = models;
    problem = why;
    Q_EMIT changed();
}

FakeSources::FakeSources(QObject *parent)
    : FakeRows({"name", "destination", "glyph", "problem", "inUse"}, parent)
{}

void FakeSources::offer(const QString &place, const QString &why, bool isInUse)
{
    append({{u"name"_s, place},
            {u"destination"_s, u"Goes to "_s + place},
            {u"glyph"_s, u"network"_s},
            {u"problem"_s, why},
            {u"inUse"_s, isInUse}});
}

FakeReceipts::FakeReceipts(QObject *parent)
    : FakeRows({"receiptId", "note", "isChange"}, parent)
{}

FakeAbilities::FakeAbilities(QObject *parent)
    : FakeRows({"name", "description", "reason", "hint"}, parent)
{}

FakeMemory::FakeMemory(QObject *parent)
    : FakeRows({"factId", "note"}, parent)
{}

FakeNetworkLedger::FakeNetworkLedger(QObject *parent)
    : FakeRows({"time", "host", "place", "feature", "carried", "sent", "received", "outcome"}, parent)
{}

bool FakeNetworkLedger::exportTo(const QUrl &file)
{
    exportProblem = u"Could not save the ledger: "_s + file.toLocalFile();
    Q_EMIT exportProblemChanged();
    return false;
}

FakeChat::FakeChat(QObject *parent)
    : QObject(parent)
{}

void FakeChat::setDraft(const QString &draft)
{
    if (m_draft == draft)
        return;
    m_draft = draft;
    Q_EMIT draftChanged();
    Q_EMIT canSendChanged();
}

void FakeChat::setResponding(bool responding)
{
    m_responding = responding;
    Q_EMIT isRespondingChanged();
    Q_EMIT canSendChanged();
}

void FakeChat::setBanner(const ErrorBanner &banner)
{
    m_banner = banner;
    Q_EMIT bannerChanged();
}

void FakeChat::setApproval(const ApprovalRequest &approval)
{
    m_approval = approval;
    Q_EMIT approvalChanged();
}

void FakeChat::send()
{
    note("send " + m_draft);
    setDraft({});
}

void FakeAISettings::saveKey(const QString &key)
{
    savedKeys += key;
    hasKey = !key.isEmpty();
    Q_EMIT keyChanged();
}

void FakeAISettings::setTest(TestState state, const QString &message, const QString &suggestion)
{
    testState = state;
    testMessage = message;
    testSuggestion = suggestion;
    Q_EMIT testChanged();
}

void FakeShell::answerQuestion(int button)
{
    answers += button;
    questionTitle.clear();
    Q_EMIT questionChanged();
}

void FakeShell::ask(const QString &title, const QStringList &buttons)
{
    questionTitle = title;
    questionText = u"It was never saved."_s;
    questionButtons = buttons;
    Q_EMIT questionChanged();
}

} // namespace morvane
