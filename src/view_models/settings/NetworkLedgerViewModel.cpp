#include "view_models/settings/NetworkLedgerViewModel.h"

#include "async/Clock.h"
#include "network/LedgerExport.h"
#include "network/PrivateNetworkAddress.h"
#include "utils/text/DesktopWords.h"

#include <QLocale>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString placeOf(const NetworkLedger::Entry &entry)
{
    return PrivateNetworkAddress::labelOf(PrivateNetworkAddress::classify(entry.host));
}

QString sizeInFull(std::int64_t bytes)
{
    const QLocale locale;
    const QString exact = bytes == 1 ? u"1 byte"_s : u"%1 bytes"_s.arg(locale.toString(bytes));
    return bytes < 1024 ? exact : u"%1 (%2)"_s.arg(locale.formattedDataSize(bytes), exact);
}

QVariantList detailsOf(const NetworkLedger::Entry &entry)
{
    const QDateTime local = entry.startedAt.toLocalTime();
    const std::pair<QString, QString> facts[] = {
        {u"Time"_s,
         QLocale().toString(local.date(), QLocale::LongFormat) + local.time().toString(u", HH:mm:ss"_s)},
        {u"Host"_s, entry.host},
        {u"Where it goes"_s, placeOf(entry)},
        {u"Feature"_s, labelOf(entry.feature)},
        {u"Your data"_s, LedgerExport::carriedLabels(entry.carrying)},
        {u"Sent"_s, sizeInFull(entry.bytesSent)},
        {u"Received"_s, sizeInFull(entry.bytesReceived)},
        {u"Outcome"_s, entry.outcome.text()}};
    QVariantList details;
    for (const auto &[label, value] : facts)
        details += QVariantMap{{u"label"_s, label}, {u"value"_s, value}};
    return details;
}

} // namespace

NetworkLedgerViewModel::NetworkLedgerViewModel(NetworkLedger &ledger, Clock &clock, QObject *parent)
    : LedgerListModel(SearchRole, parent)
    , m_ledger(ledger)
    , m_clock(clock)
{
    m_rows.setFilterCaseSensitivity(Qt::CaseInsensitive);
}

int NetworkLedgerViewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_shown.count();
}

QHash<int, QByteArray> NetworkLedgerViewModel::roleNames() const
{
    return {{TimeRole, "time"},         {HostRole, "host"},       {PlaceRole, "place"},
            {FeatureRole, "feature"},   {DataRole, "carried"},    {SentRole, "sent"},
            {ReceivedRole, "received"}, {OutcomeRole, "outcome"}, {EntryIdRole, "entryId"},
            {DetailsRole, "details"}};
}

QVariant NetworkLedgerViewModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const NetworkLedger::Entry &entry = m_shown.at(index.row());
    switch (role) {
    case TimeRole:
        return QLocale().toString(entry.startedAt.toLocalTime().time(), u"HH:mm:ss"_s);
    case HostRole:
        return entry.host;
    case PlaceRole:
        return placeOf(entry);
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
    case EntryIdRole:
        return entry.id.toString();
    case DetailsRole:
        return detailsOf(entry);
    case SearchRole:
        return QStringList{entry.host, placeOf(entry), labelOf(entry.feature),
                           LedgerExport::carriedLabels(entry.carrying), entry.outcome.text()}
            .join(u'\n');
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

bool NetworkLedgerViewModel::exportTo(const QUrl &file)
{
    return save(file, LedgerExport::csv(m_ledger.snapshot().entries), u"Could not save the ledger: "_s);
}

void NetworkLedgerViewModel::clear()
{
    m_ledger.clear();
    refresh();
}

void NetworkLedgerViewModel::setFilter(const QString &filter)
{
    if (m_filter == filter)
        return;
    m_filter = filter;
    m_rows.setFilterFixedString(m_filter.trimmed());
    Q_EMIT filterChanged();
}

void NetworkLedgerViewModel::refresh()
{
    show(m_ledger.snapshot(), m_shown);
}

} // namespace morvane
