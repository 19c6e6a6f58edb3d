#include "view_models/settings/ConnectionFindings.h"

namespace morvane {

int ConnectionFindings::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_findings.size());
}

QVariant ConnectionFindings::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Finding &finding = m_findings[static_cast<std::size_t>(index.row())];
    switch (role) {
    case TitleRole:
        return finding.title;
    case WordsRole:
        return finding.words;
    case WorksRole:
        return finding.works;
    default:
        return {};
    }
}

QHash<int, QByteArray> ConnectionFindings::roleNames() const
{
    return {{TitleRole, "title"}, {WordsRole, "words"}, {WorksRole, "works"}};
}

void ConnectionFindings::add(Finding finding)
{
    const int row = rowCount();
    beginInsertRows({}, row, row);
    m_findings.push_back(std::move(finding));
    endInsertRows();
}

void ConnectionFindings::clear()
{
    if (m_findings.empty())
        return;
    beginResetModel();
    m_findings.clear();
    endResetModel();
}

} // namespace morvane
