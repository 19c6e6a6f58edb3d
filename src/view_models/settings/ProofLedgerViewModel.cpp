#include "view_models/settings/ProofLedgerViewModel.h"

#include "async/Clock.h"
#include "view_models/chat/ProofFacts.h"
#include "view_models/chat/ProofWords.h"

#include <QLocale>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Kind = ProofLedgerViewModel::Kind;
using PlaceKind = ProofLedger::Place::Kind;

QString keyOf(Kind kind)
{
    switch (kind) {
    case Kind::all:
        return {};
    case Kind::privateCloud:
        return u"cloud"_s;
    case Kind::thisComputer:
        return u"here"_s;
    case Kind::network:
        return u"network"_s;
    case Kind::services:
        return u"service"_s;
    case Kind::refused:
        return u"refused"_s;
    }
    return {};
}

QString kindsOf(PlaceKind place)
{
    switch (place) {
    case PlaceKind::verifiedEnclave:
    case PlaceKind::morvaneCloud:
        return keyOf(Kind::privateCloud);
    case PlaceKind::enclaveRefused:
        return keyOf(Kind::privateCloud) + u' ' + keyOf(Kind::refused);
    case PlaceKind::thisMac:
        return keyOf(Kind::thisComputer);
    case PlaceKind::network:
        return keyOf(Kind::network);
    case PlaceKind::yourOwnService:
    case PlaceKind::ollamaCloud:
        return keyOf(Kind::services);
    }
    return {};
}

QString placeOf(const ProofLedger::Entry &row)
{
    QStringList parts{row.place.plainName(), row.place.host, row.place.model};
    parts.removeAll(QString());
    return parts.join(u" · "_s);
}

} // namespace

ProofLedgerViewModel::ProofLedgerViewModel(Services services, QObject *parent)
    : LedgerListModel(KindsRole, parent)
    , m_services(std::move(services))
{}

int ProofLedgerViewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_shown.count();
}

QHash<int, QByteArray> ProofLedgerViewModel::roleNames() const
{
    return {{TimeRole, "time"},
            {PlaceRole, "place"},
            {ResultRole, "result"},
            {MarkRole, "mark"},
            {EntryIdRole, "entryId"}};
}

QVariant ProofLedgerViewModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const ProofLedger::Entry &row = m_shown.at(index.row());
    switch (role) {
    case TimeRole:
        return QLocale().toString(row.startedAt.toLocalTime().time(), u"HH:mm:ss"_s);
    case PlaceRole:
        return placeOf(row);
    case ResultRole:
        return ProofWords::outcome(row);
    case MarkRole:
        return row.attestation ? u"verified"_s : ProofWords::isRefused(row) ? u"refused"_s : u"place"_s;
    case EntryIdRole:
        return row.id.toString();
    case KindsRole:
        return kindsOf(row.place.kind);
    default:
        return {};
    }
}

QVariantList ProofLedgerViewModel::facts(const QString &entryId) const
{
    const auto row = m_services.ledger.find(QUuid(entryId));
    return row ? ProofFacts::of(*row) : QVariantList();
}

QStringList ProofLedgerViewModel::limits(const QString &entryId) const
{
    const auto row = m_services.ledger.find(QUuid(entryId));
    return row ? ProofFacts::limits(*row) : QStringList();
}

void ProofLedgerViewModel::setKind(Kind kind)
{
    if (m_kind == kind)
        return;
    m_kind = kind;
    m_rows.setFilterFixedString(keyOf(kind));
    Q_EMIT kindChanged();
}

QString ProofLedgerViewModel::exportFileName() const
{
    return ProofLedger::exportFileName(m_services.clock.now().toLocalTime());
}

bool ProofLedgerViewModel::exportTo(const QUrl &file)
{
    return save(file, m_services.ledger.exportData(m_services.clock.now(), m_services.guidePage),
                u"Could not save the proof file: "_s);
}

void ProofLedgerViewModel::clear()
{
    m_services.ledger.clear();
    refresh();
    Q_EMIT cleared();
}

void ProofLedgerViewModel::refresh()
{
    askForAcceptedServers();
    show(m_services.ledger.snapshot(), m_shown);
}

void ProofLedgerViewModel::askForAcceptedServers()
{
    QString text = m_services.acceptedServers
                       ? m_services.acceptedServers()
                       : u"This build has no private cloud, so no server is accepted."_s;
    if (std::exchange(m_acceptedServers, std::move(text)) != m_acceptedServers)
        Q_EMIT acceptedServersChanged();
}

} // namespace morvane
