#include "ServedLists.h"

#include "CloudScenarios.h"
#include "DevelopmentAuthority.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int usualVersion = 5;
constexpr qsizetype mostBytes = 524288; // that a client takes

constexpr int newerVersion = 6;

// An entry for each scenario.
QJsonObject listOf(int version)
{
    QJsonArray entries;
    for (const CloudScenario &scenario : CloudScenarios::all()) {
        const QString model(scenario.model);
        const bool isBuiltIn = scenario.model == DevelopmentAuthority::builtInModel;
        const QString id = isBuiltIn ? QString(DevelopmentAuthority::builtInID) : u"development."_s + model;
        entries.append(DevelopmentAuthority::listEntry(id, model));
    }
    return {{u"formatVersion"_s, 1},
            {u"listVersion"_s, version},
            {u"issuedAt"_s, u"2025-01-01T00:00:00Z"_s},
            {u"notAfter"_s, u"2075-01-01T00:00:00Z"_s},
            {u"entries"_s, entries},
            {u"revoked"_s, QJsonArray()}};
}

void accept(QJsonObject &list, const QJsonObject &entry)
{
    QJsonArray entries = list["entries"_L1].toArray();
    entries.append(entry);
    list["entries"_L1] = entries;
}

// The built-in stack's configuration and that of the practice model.
void withdraw(QJsonObject &list)
{
    list["revoked"_L1] = QJsonArray{QString(DevelopmentAuthority::builtInID), u"development.e2ee-practice"_s};
}

QByteArray bytesOf(const QJsonObject &list)
{
    return QJsonDocument(list).toJson();
}

// White space behind the list counts and changes nothing that it says.
QByteArray padded(const QJsonObject &list, qsizetype size)
{
    const QByteArray bytes = bytesOf(list);
    return bytes + QByteArray(size - bytes.size(), ' ');
}

Work good(ServedLists &lists, Exchange &exchange)
{
    QByteArray list = bytesOf(listOf(usualVersion));
    co_await lists.send(exchange, std::move(list));
}

// Accepts the newer image as well, of the scenario that proves it and of the built-in model.
Work newest(ServedLists &lists, Exchange &exchange)
{
    QJsonObject list = listOf(newerVersion);
    accept(list, DevelopmentAuthority::newerListEntry(u"development.newer"_s, u"e2ee-proof-newer-image"_s));
    accept(list, DevelopmentAuthority::newerListEntry(u"development.newer.built-in"_s,
                                                      QString(DevelopmentAuthority::builtInModel)));
    QByteArray bytes = bytesOf(list);
    co_await lists.send(exchange, std::move(bytes));
}

Work newer(ServedLists &lists, Exchange &exchange)
{
    const bool isFirst = lists.fetches() == 1;
    co_await (isFirst ? good : newest)(lists, exchange);
}

Work rolledBack(ServedLists &lists, Exchange &exchange)
{
    QByteArray list = bytesOf(listOf(lists.fetches() == 1 ? usualVersion : usualVersion - 1));
    co_await lists.send(exchange, std::move(list));
}

Work sameVersion(ServedLists &lists, Exchange &exchange)
{
    QByteArray list = bytesOf(listOf(usualVersion));
    if (lists.fetches() > 1)
        list += ' ';
    co_await lists.send(exchange, std::move(list));
}

Work withdrawn(ServedLists &lists, Exchange &exchange)
{
    QJsonObject list = listOf(usualVersion);
    withdraw(list);
    QByteArray bytes = bytesOf(list);
    co_await lists.send(exchange, std::move(bytes));
}

// Withdraws one of the two, so that its withdrawals can be seen to count.
Work expired(ServedLists &lists, Exchange &exchange)
{
    QJsonObject list = listOf(usualVersion);
    list["notAfter"_L1] = u"2025-02-01T00:00:00Z"_s;
    list["revoked"_L1] = QJsonArray{QString(DevelopmentAuthority::builtInID)};
    QByteArray bytes = bytesOf(list);
    co_await lists.send(exchange, std::move(bytes));
}

Work tooMany(ServedLists &lists, Exchange &exchange)
{
    QJsonObject list = listOf(usualVersion);
    for (qsizetype i = list["entries"_L1].toArray().size(); i < 129; ++i)
        accept(list, DevelopmentAuthority::listEntry(u"development.more-%1"_s.arg(i), u"e2ee-more"_s));
    QByteArray bytes = bytesOf(list);
    co_await lists.send(exchange, std::move(bytes));
}

Work largest(ServedLists &lists, Exchange &exchange)
{
    QByteArray list = padded(listOf(usualVersion), mostBytes);
    co_await lists.send(exchange, std::move(list));
}

Work tooLarge(ServedLists &lists, Exchange &exchange)
{
    QByteArray list = padded(listOf(usualVersion), mostBytes + 1);
    co_await lists.send(exchange, std::move(list));
}

Work unknownField(ServedLists &lists, Exchange &exchange)
{
    QJsonObject list = listOf(usualVersion);
    list["note"_L1] = u"more than a list says"_s;
    QByteArray bytes = bytesOf(list);
    co_await lists.send(exchange, std::move(bytes));
}

Work badSignature(ServedLists &lists, Exchange &exchange)
{
    lists.signBadly();
    co_await good(lists, exchange);
}

// A byte now and then, for longer than anyone waits.
Work drips(ServedLists &, Exchange &exchange)
{
    co_await exchange.beginStream(200, "application/json");
    while (true) {
        co_await exchange.chunk(" ");
        co_await exchange.pause(std::chrono::milliseconds(100));
    }
}

Work missing(ServedLists &, Exchange &exchange)
{
    co_await CloudScenarios::refuse(exchange, 404, u"There is no list."_s);
}

Work dead(ServedLists &, Exchange &exchange)
{
    exchange.cut();
    co_return;
}

} // namespace

std::span<const ServedLists::Kind> ServedLists::kinds()
{
    static constexpr Kind all[]{
        {"good"_L1, "version 5, with an entry for each scenario on its usual image"_L1, good},
        {"newer"_L1, "the good list; from the second fetch on the newest"_L1, newer},
        {"newest"_L1, "version 6, which accepts the newer image too"_L1, newest},
        {"rolled-back"_L1, "the good list; from the second fetch on version 4"_L1, rolledBack},
        {"same-version"_L1, "the good list; from the second fetch on the same version in other bytes"_L1,
         sameVersion},
        {"withdrawn"_L1, "withdraws the built-in configuration and that of e2ee-practice"_L1, withdrawn},
        {"expired"_L1, "ran out before it arrived; withdraws the built-in configuration"_L1, expired},
        {"too-many"_L1, "129 entries"_L1, tooMany},
        {"largest"_L1, "the good list, of 524,288 bytes"_L1, largest},
        {"too-large"_L1, "the same with one byte more"_L1, tooLarge},
        {"unknown-field"_L1, "a field that no list has"_L1, unknownField},
        {"bad-signature"_L1, "the good list, signed by a stranger"_L1, badSignature},
        {"drip"_L1, "a body that comes byte by byte without end"_L1, drips},
        {"missing"_L1, "HTTP 404"_L1, missing},
        {"dead"_L1, "closes the connection where the list should be"_L1, dead},
    };
    return all;
}

ServedLists::ServedLists(const QString &name)
{
    for (const Kind &kind : kinds()) {
        if (kind.name == name)
            m_kind = &kind;
    }
    if (!m_kind)
        throw std::runtime_error("there is no list \"" + name.toStdString() + '"');
}

Work ServedLists::sendList(Exchange &exchange)
{
    ++m_fetches;
    co_await m_kind->play(*this, exchange);
}

Work ServedLists::send(Exchange &exchange, QByteArray list)
{
    m_list = list;
    co_await exchange.respond(200, "application/json", list);
}

Work ServedLists::sendSignature(Exchange &exchange)
{
    const ListKey key = m_signsBadly ? ListKey() : DevelopmentAuthority::authority().listKey;
    const QByteArray signature = key.signatureFile(m_list);
    co_await exchange.respond(200, "text/plain", signature);
}

} // namespace morvane
