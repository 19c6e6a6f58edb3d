#pragma once

#include "view_models/settings/LedgerRows.h"

#include <QAbstractListModel>
#include <QSortFilterProxyModel>
#include <QString>
#include <QTimer>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <functional>

namespace morvane {

// The list of a ledger's rows on a page of Settings, newest first. It follows its ledger while the page is
// looked at: rows come from any thread, and a hidden page costs nothing. GUI thread.
class LedgerListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(int count READ rowCountNow NOTIFY countChanged)
    Q_PROPERTY(QAbstractItemModel *rows READ rows CONSTANT) // those that the filter leaves
    Q_PROPERTY(QString exportProblem READ exportProblem NOTIFY exportProblemChanged)
    Q_PROPERTY(bool watching READ isWatching WRITE setWatching NOTIFY watchingChanged)

public:
    [[nodiscard]] QAbstractItemModel *rows() { return &m_rows; }
    [[nodiscard]] const QString &exportProblem() const { return m_exportProblem; } // empty for none
    [[nodiscard]] bool isWatching() const { return m_poll.isActive(); }
    void setWatching(bool watching);

Q_SIGNALS:
    void countChanged();
    void exportProblemChanged();
    void watchingChanged();

protected:
    // `filterRole` is what a filter looks through.
    LedgerListModel(int filterRole, QObject *parent);

    // Brings the rows up to the ledger.
    virtual void refresh() = 0;
    template <typename Snapshot>
    void show(Snapshot snapshot, LedgerRows<Snapshot> &shown)
    {
        if (shown.isUpTo(snapshot))
            return;
        shown.take(std::move(snapshot), telling());
        Q_EMIT countChanged();
    }
    // False, with the reason after `problem`, when it could not be written.
    bool save(const QUrl &file, const QByteArray &data, const QString &problem);

    QSortFilterProxyModel m_rows;

private:
    [[nodiscard]] int rowCountNow() const { return rowCount(); }
    [[nodiscard]] LedgerTelling telling();

    QString m_exportProblem;
    QTimer m_poll;
};

} // namespace morvane
