#include "view_models/settings/NetworkLedgerViewModel.h"

#include "async/Clock.h"
#include "network/LedgerExport.h"
#include "network/PrivateNetworkAddress.h"
#include "utils/files/PrivateFile.h"
#include "utils/text/DesktopWords.h"

#include <QLocale>
#include <QTimer>
#include <QUrl>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Rows come from any thread, so a panel that is open looks for a new revision this often.
constexpr std::chrono::milliseconds lookInterval{500};

} // namespace

NetworkLedgerViewModel::NetworkLedgerViewModel(NetworkLedger &ledger, Clock &clock, QObject *parent)
    : QAbstractListModel(parent)
    , m_ledger(ledger)
    , m_clock(clock)
    , m_poll(std::make_unique<QTimer>())
{
    m_poll->setInterval(lookInterval);
    connect(m_poll.get(), &QTimer::timeout, this, &NetworkLedgerViewModel::refresh);
}

NetworkLedgerViewModel::~NetworkLedgerViewModel() = default;

int NetworkLedgerViewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_shown.entries.size());
}

QHash<int, QByteArray> NetworkLedgerViewModel::roleNames() const
{
    return {{TimeRole, "time"},    {HostRole, "host"}, {PlaceRole, "place"},       {FeatureRole, "feature"},
            {DataRole, "carried"}, {SentRole, "sent"}, {ReceivedRole, "received"}, {OutcomeRole, "outcome"}};
}

QVariant NetworkLedgerViewModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const auto newestFirst = m_shown.entries.rbegin() + index.row();
    const NetworkLedger::Entry &entry = *newestFirst;
    switch (role) {
    case TimeRole:
        return QLocale().toString(entry.startedAt.toLocalTime().time(), u"HH:mm:ss"_s);
    case HostRole:
        return entry.host;
    case PlaceRole:
        return PrivateNetworkAddress::labelOf(PrivateNetworkAddress::classify(entry.host));
    case FeatureRole:
        return labelOf(entry.feature);
    case DataRole:
        return LedgerExport::carriedLabels(entry.carrying);
    case SentRole:
        return QLocale().formattedDataSize(entry.bytesSent);
    case ReceivedRole:
        return QLocale().formattedDataSize(entry.bytesReceived);
    case OutcomeRole:
        return entry.outcome.text();
    default:
        return {};
    }
}

QString NetworkLedgerViewModel::exportFileName() const
{
    return LedgerExport::fileName(m_clock.now().toLocalTime());
}

QString NetworkLedgerViewModel::connectionLister()
{
    return DesktopWords::here().connectionLister.toString();
}

bool NetworkLedgerViewModel::isWatching() const
{
    return m_poll->isActive();
}

void NetworkLedgerViewModel::setWatching(bool watching)
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

bool NetworkLedgerViewModel::exportTo(const QUrl &file)
{
    m_exportProblem.clear();
    try {
        PrivateFile::write(file.toLocalFile(), LedgerExport::csv(m_ledger.snapshot().entries));
    } catch (const FileError &error) {
        m_exportProblem = u"Could not save the ledger: "_s + QString::fromUtf8(error.what());
    }
    Q_EMIT exportProblemChanged();
    return m_exportProblem.isEmpty();
}

void NetworkLedgerViewModel::clear()
{
    m_ledger.clear();
    refresh();
}

void NetworkLedgerViewModel::refresh()
{
    auto snapshot = m_ledger.snapshot();
    if (snapshot.revision == m_shown.revision)
        return;
    beginResetModel();
    m_shown = std::move(snapshot);
    endResetModel();
    Q_EMIT countChanged();
}

} // namespace morvane
