#pragma once

#include "network/NetworkLedger.h"
#include "view_models/settings/LedgerListModel.h"

namespace morvane {

class Clock;

// Settings > Network: what the application sent and received since it started, newest first.
class NetworkLedgerViewModel : public morvane::LedgerListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    // Leaves the rows that hold it, in any case, in one of the texts that they show.
    Q_PROPERTY(QString filter READ filter WRITE setFilter NOTIFY filterChanged)
    Q_PROPERTY(QString exportFileName READ exportFileName)
    // A command that shows the same connections from outside.
    Q_PROPERTY(QString connectionLister READ connectionLister CONSTANT)

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

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] const QString &filter() const { return m_filter; }
    void setFilter(const QString &filter);

    [[nodiscard]] QString exportFileName() const;
    [[nodiscard]] static QString connectionLister();

    // Writes the CSV to a file: URL that the user chose; true when it was saved.
    Q_INVOKABLE bool exportTo(const QUrl &file);
    Q_INVOKABLE void clear();

Q_SIGNALS:
    void filterChanged();

private:
    void refresh() override;

    NetworkLedger &m_ledger;
    Clock &m_clock;
    LedgerRows<NetworkLedger::Snapshot> m_shown;
    QString m_filter;
};

} // namespace morvane
