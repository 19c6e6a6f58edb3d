#include "view_models/settings/ProofLedgerViewModel.h"

#include "async/Clock.h"
#include "utils/files/PrivateFile.h"
#include "view_models/chat/ProofFacts.h"
#include "view_models/chat/ProofWords.h"
#include "view_models/settings/ChosenFile.h"

#include <QLocale>
#include <QTimer>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Rows come from any thread, so a panel that is open looks for a new revision this often.
constexpr std::chrono::milliseconds lookInterval{500};

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
    : QAbstractListModel(parent)
    , m_services(std::move(services))
    , m_poll(std::make_unique<QTimer>())
{
    m_rows.setSourceModel(this);
    m_rows.setFilterRole(KindsRole);
    m_poll->setInterval(lookInterval);
    connect(m_poll.get(), &QTimer::timeout, this, &ProofLedgerViewModel::refresh);
}

ProofLedgerViewModel::~ProofLedgerViewModel() = default;

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

bool ProofLedgerViewModel::isWatching() const
{
    return m_poll->isActive();
}

void ProofLedgerViewModel::setWatching(bool watching)
{
    if (watching == isWatching())
        return;
    if (watching) {
        refresh();
        m_poll->start();
    } else {
        m_poll->stop();
    }
    Q_EMIT watchingChanged();
}

bool ProofLedgerViewModel::exportTo(const QUrl &file)
{
    m_exportProblem.clear();
    try {
        PrivateFile::write(ChosenFile::path(file),
                           m_services.ledger.exportData(m_services.clock.now(), m_services.guidePage));
    } catch (const FileError &error) {
        m_exportProblem = u"Could not save the proof file: "_s + QString::fromUtf8(error.what());
    }
    Q_EMIT exportProblemChanged();
    return m_exportProblem.isEmpty();
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
    auto snapshot = m_services.ledger.snapshot();
    if (m_shown.isUpTo(snapshot))
        return;
    m_shown.take(std::move(snapshot),
                 {.beginRemove = [this](int row) { beginRemoveRows({}, row, row); },
                  .endRemove = [this] { endRemoveRows(); },
                  .beginInsertOnTop = [this](int count) { beginInsertRows({}, 0, count - 1); },
                  .endInsert = [this] { endInsertRows(); },
                  .beginReset = [this] { beginResetModel(); },
                  .endReset = [this] { endResetModel(); }});
    Q_EMIT countChanged();
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
