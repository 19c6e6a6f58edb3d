#include "view_models/settings/ComputerListModel.h"

#include <algorithm>

namespace morvane {

// Both lists are in the same order, so what is in one alone goes or comes where it stands.
void ComputerListModel::show(const std::vector<NetworkComputerBrowser::Computer> &computers)
{
    for (int row = rowCount() - 1; row >= 0; --row) {
        if (std::find(computers.begin(), computers.end(), m_computers[static_cast<std::size_t>(row)]) !=
            computers.end())
            continue;
        beginRemoveRows({}, row, row);
        m_computers.erase(m_computers.begin() + row);
        endRemoveRows();
    }
    for (std::size_t row = 0; row < computers.size(); ++row) {
        if (row < m_computers.size() && m_computers[row] == computers[row])
            continue;
        beginInsertRows({}, static_cast<int>(row), static_cast<int>(row));
        m_computers.insert(m_computers.begin() + static_cast<std::ptrdiff_t>(row), computers[row]);
        endInsertRows();
    }
}

int ComputerListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_computers.size());
}

QVariant ComputerListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const auto &computer = m_computers[static_cast<std::size_t>(index.row())];
    return role == NameRole ? computer.displayName : role == HostnameRole ? computer.hostname : QVariant();
}

QHash<int, QByteArray> ComputerListModel::roleNames() const
{
    return {{NameRole, "name"}, {HostnameRole, "hostname"}};
}

} // namespace morvane
