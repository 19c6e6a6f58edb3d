#include "view_models/settings/LocalModelListModel.h"

#include "view_models/settings/LocalModelWords.h"

namespace morvane {

void LocalModelListModel::show(const std::vector<ServerModel> &models, const QString &inUse)
{
    if (models != m_models) {
        beginResetModel();
        m_models = models;
        m_inUse = inUse;
        endResetModel();
    } else if (inUse != m_inUse) {
        m_inUse = inUse;
        if (!m_models.empty())
            Q_EMIT dataChanged(index(0), index(rowCount() - 1), {InUseRole});
    }
}

int LocalModelListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_models.size());
}

QVariant LocalModelListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const ServerModel &model = m_models[static_cast<std::size_t>(index.row())];
    switch (role) {
    case NameRole:
        return model.name;
    case SizeRole:
        return model.bytes ? LocalModelWords::size(static_cast<std::uint64_t>(*model.bytes)) : QString();
    case InUseRole:
        return model.name == m_inUse;
    default:
        return {};
    }
}

QHash<int, QByteArray> LocalModelListModel::roleNames() const
{
    return {{NameRole, "name"}, {SizeRole, "size"}, {InUseRole, "inUse"}};
}

} // namespace morvane
