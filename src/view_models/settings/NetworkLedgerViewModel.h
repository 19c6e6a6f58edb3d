#pragma once

#include <QAbstractListModel>
#include <QSortFilterProxyModel>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include "network/NetworkLedger.h"
#include "view_models/settings/LedgerRows.h"

class QTimer;

namespace morvane {

class Clock;

// Settings > Network: what the application sent and received since it started, newest first.
class NetworkLedgerViewModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(int count READ rowCountNow NOTIFY countChanged)
    // The rows that hold the filter's text, in any case, in one of the texts that they show.
    Q_PROPERTY(QAbstractItemModel *rows READ rows CONSTANT)
    Q_PROPERTY(QString filter READ filter WRITE setFilter NOTIFY filterChanged)
    Q_PROPERTY(QString exportFileName READ exportFileName)
    // A command that shows the same connections from outside.
    Q_PROPERTY(QString connectionLister READ connectionLister CONSTANT)
    Q_PROPERTY(QString exportProblem READ exportProblem NOTIFY exportProblemChanged)
    // While set, the list follows the ledger; a hidden panel costs nothing.
    Q_PROPERTY(bool watching READ isWatching WRITE setWatching NOTIFY watchingChanged)

public:
    enum Role {
        TimeRole = Qt::UserRole + 1,
        HostRole,
        PlaceRole,
        FeatureRole,
        DataRole,
        SentRole,
        ReceivedRole,
        OutcomeRole,
        EntryIdRole, // text, of this row alone
        DetailsRole, // list of { label, value }: all that is known of it
        SearchRole   // what a filter looks through
    };

    NetworkLedgerViewModel(NetworkLedger &ledger, Clock &clock, QObject *parent = nullptr);
    ~NetworkLedgerViewModel() override;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] QAbstractItemModel *rows() { return &m_rows; }
    [[nodiscard]] const QString &filter() const { return m_filter; }
    void setFilter(const QString &filter);

    [[nodiscard]] QString exportFileName() const;
    [[nodiscard]] static QString connectionLister();
    [[nodiscard]] const QString &exportProblem() const { return m_exportProblem; }
    [[nodiscard]] bool isWatching() const;
    void setWatching(bool watching);

    // Writes the CSV to a file: URL that the user chose; true when it was saved.
    Q_INVOKABLE bool exportTo(const QUrl &file);
    Q_INVOKABLE void clear();

Q_SIGNALS:
    void countChanged();
    void filterChanged();
    void exportProblemChanged();
    void watchingChanged();

private:
    [[nodiscard]] int rowCountNow() const { return rowCount(); }
    void refresh();

    NetworkLedger &m_ledger;
    Clock &m_clock;
    LedgerRows<NetworkLedger::Snapshot> m_shown;
    QSortFilterProxyModel m_rows;
    QString m_filter;
    QString m_exportProblem;
    std::unique_ptr<QTimer> m_poll;
};

} // namespace morvane
