#pragma once

#include "attestation/ProofLedger.h"
#include "view_models/settings/LedgerListModel.h"

namespace morvane {

class Clock;

// Settings > Proof: where each answer since the start came from, newest first, and what proves it.
class ProofLedgerViewModel : public morvane::LedgerListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(morvane::ProofLedgerViewModel::Kind kind READ kind WRITE setKind NOTIFY kindChanged)
    Q_PROPERTY(QString exportFileName READ exportFileName)
    // Which list of accepted servers is in force.
    Q_PROPERTY(QString acceptedServers READ acceptedServers NOTIFY acceptedServersChanged)

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

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] Kind kind() const { return m_kind; }
    void setKind(Kind kind);

    [[nodiscard]] QString exportFileName() const;
    [[nodiscard]] const QString &acceptedServers() const { return m_acceptedServers; }

    // ProofFacts of a row; empty for one that has gone.
    Q_INVOKABLE QVariantList facts(const QString &entryId) const;
    Q_INVOKABLE QStringList limits(const QString &entryId) const;

    // Writes the rows to a file: URL that the user chose; true when it was saved.
    Q_INVOKABLE bool exportTo(const QUrl &file);
    Q_INVOKABLE void clear();

Q_SIGNALS:
    void kindChanged();
    void acceptedServersChanged();
    void cleared();

private:
    void refresh() override;
    void askForAcceptedServers();

    Services m_services;
    LedgerRows<ProofLedger::Snapshot> m_shown;
    Kind m_kind = Kind::all;
    QString m_acceptedServers;
};

} // namespace morvane
