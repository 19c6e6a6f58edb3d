#include "view_models/settings/LedgerListModel.h"

#include "utils/files/PrivateFile.h"
#include "view_models/settings/ChosenFile.h"

namespace morvane {

namespace {

// How often a list that is looked at asks for a new revision.
constexpr std::chrono::milliseconds lookInterval{500};

} // namespace

LedgerListModel::LedgerListModel(int filterRole, QObject *parent)
    : QAbstractListModel(parent)
{
    m_rows.setSourceModel(this);
    m_rows.setFilterRole(filterRole);
    m_poll.setInterval(lookInterval);
    connect(&m_poll, &QTimer::timeout, this, [this] { refresh(); });
}

void LedgerListModel::setWatching(bool watching)
{
    if (watching == isWatching())
        return;
    if (watching) {
        refresh();
        m_poll.start();
    } else {
        m_poll.stop();
    }
    Q_EMIT watchingChanged();
}

bool LedgerListModel::save(const QUrl &file, const QByteArray &data, const QString &problem)
{
    m_exportProblem.clear();
    try {
        PrivateFile::write(ChosenFile::path(file), data);
    } catch (const FileError &error) {
        m_exportProblem = problem + QString::fromUtf8(error.what());
    }
    Q_EMIT exportProblemChanged();
    return m_exportProblem.isEmpty();
}

LedgerTelling LedgerListModel::telling()
{
    return {.beginRemove = [this](int row) { beginRemoveRows({}, row, row); },
            .endRemove = [this] { endRemoveRows(); },
            .beginInsertOnTop = [this](int count) { beginInsertRows({}, 0, count - 1); },
            .endInsert = [this] { endInsertRows(); },
            .beginReset = [this] { beginResetModel(); },
            .endReset = [this] { endResetModel(); }};
}

} // namespace morvane
