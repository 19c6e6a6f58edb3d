#pragma once

#include "attestation/ProofLedger.h"
#include "view_models/settings/LedgerRows.h"

#include <QAbstractListModel>
#include <QSortFilterProxyModel>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <memory>

class QTimer;

namespace morvane {

class Clock;

// Settings > Proof: where each answer since the start came from, newest first, and what proves it.
class ProofLedgerViewModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(int count READ rowCountNow NOTIFY countChanged)
    Q_PROPERTY(QAbstractItemModel *rows READ rows CONSTANT) // those of the kind
    Q_PROPERTY(morvane::ProofLedgerViewModel::Kind kind READ kind WRITE setKind NOTIFY kindChanged)
    Q_PROPERTY(QString exportFileName READ exportFileName)
    Q_PROPERTY(QString exportProblem READ exportProblem NOTIFY exportProblemChanged)
    // Which list of accepted servers is in force.
    Q_PROPERTY(QString acceptedServers READ acceptedServers NOTIFY acceptedServersChanged)
    // While set, the list follows the ledger; a hidden panel costs nothing.
    Q_PROPERTY(bool watching READ isWatching WRITE setWatching NOTIFY watchingChanged)

public:
    // A refused request is one of the private cloud as well.
    enum class Kind { all, privateCloud, thisComputer, network, services, refused };
    Q_ENUM(Kind)

    enum Role {
        TimeRole = Qt::UserRole + 1,
        PlaceRole,   // with the model
        ResultRole,  // what came of it, or why nothing did
        MarkRole,    // as in MessageListModel::ProofMarkRole
        EntryIdRole, // text, of this row alone
        KindsRole    // what a filter looks through
    };

    struct Services {
        ProofLedger &ledger;
        Clock &clock;
        QString guidePage;                        // for who checks an export; empty where there is none
        std::function<QString()> acceptedServers; // absent in a build without a private cloud
    };

    explicit ProofLedgerViewModel(Services services, QObject *parent = nullptr);
    ~ProofLedgerViewModel() override;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] QAbstractItemModel *rows() { return &m_rows; }
    [[nodiscard]] Kind kind() const { return m_kind; }
    void setKind(Kind kind);

    [[nodiscard]] QString exportFileName() const;
    [[nodiscard]] const QString &exportProblem() const { return m_exportProblem; }
    [[nodiscard]] const QString &acceptedServers() const { return m_acceptedServers; }
    [[nodiscard]] bool isWatching() const;
    void setWatching(bool watching);

    // ProofFacts of a row; empty for one that has gone.
    Q_INVOKABLE QVariantList facts(const QString &entryId) const;
    Q_INVOKABLE QStringList limits(const QString &entryId) const;

    // Writes the rows to a file: URL that the user chose; true when it was saved.
    Q_INVOKABLE bool exportTo(const QUrl &file);
    Q_INVOKABLE void clear();

Q_SIGNALS:
    void countChanged();
    void kindChanged();
    void exportProblemChanged();
    void acceptedServersChanged();
    void watchingChanged();
    void cleared();

private:
    [[nodiscard]] int rowCountNow() const { return rowCount(); }
    void refresh();
    void askForAcceptedServers();

    Services m_services;
    LedgerRows<ProofLedger::Snapshot> m_shown;
    QSortFilterProxyModel m_rows;
    Kind m_kind = Kind::all;
    QString m_exportProblem;
    QString m_acceptedServers;
    std::unique_ptr<QTimer> m_poll;
};

} // namespace morvane
