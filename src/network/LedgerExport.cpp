#include "network/LedgerExport.h"

#include "network/PrivateNetworkAddress.h"

#include <QLocale>
#include <QStringList>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString quoted(QString field)
{
    return u'"' + field.replace(u'"', u"\"\""_s) + u'"';
}

QString rowOf(const QStringList &fields)
{
    QStringList cells;
    for (const QString &field : fields)
        cells.append(quoted(field));
    return cells.join(u',');
}

QStringList fieldsOf(const NetworkLedger::Entry &entry)
{
    return {entry.startedAt.toUTC().toString(Qt::ISODateWithMs),
            entry.host,
            PrivateNetworkAddress::labelOf(PrivateNetworkAddress::classify(entry.host)),
            labelOf(entry.feature),
            LedgerExport::carriedLabels(entry.carrying),
            QString::number(entry.bytesSent),
            QString::number(entry.bytesReceived),
            entry.outcome.text()};
}

} // namespace

QString LedgerExport::fileName(const QDateTime &moment)
{
    return u"morvane-network-ledger-"_s + QLocale::c().toString(moment, u"yyyy-MM-dd-HHmm"_s) + u".csv"_s;
}

QByteArray LedgerExport::csv(const std::vector<NetworkLedger::Entry> &entries)
{
    QStringList rows{rowOf({u"Time"_s, u"Host"_s, u"Where it goes"_s, u"Feature"_s, u"Your data"_s,
                            u"Sent (bytes)"_s, u"Received (bytes)"_s, u"Outcome"_s})};
    for (const NetworkLedger::Entry &entry : entries)
        rows.append(rowOf(fieldsOf(entry)));
    return rows.join(u'\n').toUtf8();
}

QString LedgerExport::carriedLabels(SensitiveDataSet carrying)
{
    QStringList labels;
    for (const auto data :
         {SensitiveData::screenText, SensitiveData::memory, SensitiveData::image, SensitiveData::voice}) {
        if (carrying.testFlag(data))
            labels.append(labelOf(data));
    }
    labels.sort();
    return labels.isEmpty() ? u"none"_s : labels.join(u", "_s);
}

} // namespace morvane
