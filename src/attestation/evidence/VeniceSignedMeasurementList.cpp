#include "attestation/evidence/VeniceSignedMeasurementList.h"

#include "attestation/evidence/CaseText.h"
#include "attestation/evidence/ListSignature.h"
#include "utils/text/Json.h"
#include "utils/text/Text.h"
#include "utils/text/UniversalTime.h"

#include <QStringList>

#include <algorithm>
#include <optional>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using List = VeniceSignedMeasurementList;
using Refusal = VeniceSignedMeasurementList::Refusal;
using Plain = VeniceSignedMeasurementList::Refusal::Plain;

constexpr std::int64_t formatVersion = 1;
constexpr qsizetype entryLimit = 128;
constexpr qsizetype revokedLimit = 256;
constexpr std::int64_t configurationPartLimit = 1048576; // bytes

void require(bool holds, QLatin1StringView key)
{
    if (!holds)
        throw Refusal(Refusal::BadValue{QString(key)});
}

template <typename T>
T require(std::optional<T> value, QLatin1StringView key)
{
    require(value.has_value(), key);
    return *std::move(value);
}

// Exactly these keys, no more and no fewer. QJsonObject keeps its keys sorted, so the first is reported.
void requireKeys(const QJsonObject &object, QLatin1StringView context, QStringList allowed)
{
    for (const QString &key : object.keys()) {
        if (!allowed.contains(key))
            throw Refusal(Refusal::UnknownField{context + u"."_s + key});
    }
    allowed.sort();
    for (const QString &key : allowed) {
        if (!object.contains(key))
            throw Refusal(Refusal::MissingField{context + u"."_s + key});
    }
}

bool isLowerCaseLetterOrDigit(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9');
}

bool isLowerCaseHex(QStringView text)
{
    return std::all_of(text.begin(), text.end(),
                       [](QChar c) { return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f'); });
}

// Between 1 and `limit` of the characters that names are made of.
bool isName(QStringView text, qsizetype limit, QStringView punctuation)
{
    return !text.isEmpty() && text.size() <= limit && std::all_of(text.begin(), text.end(), [&](QChar c) {
        return isLowerCaseLetterOrDigit(c) || punctuation.contains(c);
    });
}

bool isLabel(const QString &text)
{
    const qsizetype count = Text::characterCount(text);
    return count >= 1 && count <= 120 && std::none_of(text.begin(), text.end(), [](QChar c) {
               return c.unicode() < 32 || c.unicode() == 127;
           });
}

QString readLabel(const QJsonObject &object, QLatin1StringView key)
{
    const auto text = require(Json::string(object, key), key);
    require(isLabel(text), key);
    return text;
}

QString readDigest(const QJsonObject &object, QLatin1StringView key, qsizetype length)
{
    const auto text = require(Json::string(object, key), key);
    require(text.size() == length && isLowerCaseHex(text), key);
    return text;
}

// Year to seconds in UTC: 2026-09-01T00:00:00Z.
QDateTime readDate(const QJsonObject &object, QLatin1StringView key)
{
    const auto text = require(Json::string(object, key), key);
    const QString shape = u"dddd-dd-ddTdd:dd:ddZ"_s;
    require(std::equal(text.begin(), text.end(), shape.begin(), shape.end(),
                       [](QChar c, QChar s) { return s == u'd' ? c >= u'0' && c <= u'9' : c == s; }),
            key);
    const QDate day = QDate::fromString(text.first(10), u"yyyy-MM-dd"_s);
    const QTime time = QTime::fromString(text.mid(11, 8), u"HH:mm:ss"_s);
    require(day.isValid() && time.isValid(), key);
    return UniversalTime::at(day, time);
}

VeniceReviewedConfiguration readConfiguration(const QJsonObject &entry, const QString &id)
{
    const auto object = require(Json::object(entry, "configuration"_L1), "configuration"_L1);
    requireKeys(object, "configuration"_L1,
                {u"label"_s, u"prefixLength"_s, u"suffixLength"_s, u"prefixSHA256"_s, u"suffixSHA256"_s});
    const auto readLength = [&object](QLatin1StringView key) {
        const auto length = require(Json::integer(object, key), key);
        require(length >= 1 && length <= configurationPartLimit, key);
        return length;
    };
    return {.id = id,
            .label = readLabel(object, "label"_L1),
            .prefixLength = readLength("prefixLength"_L1),
            .prefixSHA256 = readDigest(object, "prefixSHA256"_L1, 64),
            .suffixLength = readLength("suffixLength"_L1),
            .suffixSHA256 = readDigest(object, "suffixSHA256"_L1, 64)};
}

bool isLive(const QString &name)
{
    return name == "compose-hash"_L1 || name == "instance-id"_L1;
}

VeniceBootEvent readBootEvent(const QJsonObject &object)
{
    requireKeys(object, "boot event"_L1, {u"name"_s, u"payload"_s});
    const auto key = "bootEvents"_L1;
    const auto name = require(Json::string(object, "name"_L1), key);
    require(isName(name, 48, u"-"), key);
    if (isLive(name)) {
        require(object.value("payload"_L1).isNull(), key);
        return {name, std::nullopt};
    }
    const auto payload = require(Json::string(object, "payload"_L1), key);
    require(payload.size() <= 4096 && payload.size() % 2 == 0 && isLowerCaseHex(payload), key);
    return {name, payload};
}

std::vector<VeniceBootEvent> readBootEvents(const QJsonObject &entry)
{
    const auto key = "bootEvents"_L1;
    const auto objects = require(Json::objects(entry, key), key);
    require(objects.size() >= 2 && objects.size() <= 32, key);
    std::vector<VeniceBootEvent> events;
    events.reserve(objects.size());
    for (const QJsonObject &object : objects)
        events.push_back(readBootEvent(object));
    for (const auto live : {"compose-hash"_L1, "instance-id"_L1}) {
        require(std::count_if(events.begin(), events.end(),
                              [live](const VeniceBootEvent &event) { return event.name == live; }) == 1,
                key);
    }
    return events;
}

List::Entry readEntry(const QJsonObject &object)
{
    requireKeys(object, "entry"_L1,
                {u"id"_s, u"model"_s, u"stackLabel"_s, u"mrtd"_s, u"rtmr0"_s, u"rtmr1"_s, u"rtmr2"_s,
                 u"configuration"_s, u"bootEvents"_s});
    List::Entry entry;
    entry.id = require(Json::string(object, "id"_L1), "id"_L1);
    require(List::isIdentifier(entry.id), "id"_L1);
    entry.model = require(Json::string(object, "model"_L1), "model"_L1);
    require(entry.model.startsWith("e2ee-"_L1) && isName(QStringView(entry.model).sliced(5), 64, u"-."),
            "model"_L1);
    entry.stack.label = readLabel(object, "stackLabel"_L1);
    entry.stack.mrtd = readDigest(object, "mrtd"_L1, 96);
    entry.stack.rtmr0 = readDigest(object, "rtmr0"_L1, 96);
    entry.stack.rtmr1 = readDigest(object, "rtmr1"_L1, 96);
    entry.stack.rtmr2 = readDigest(object, "rtmr2"_L1, 96);
    entry.stack.configurations = {readConfiguration(object, entry.id)};
    entry.stack.bootEvents = readBootEvents(object);
    entry.stack.requiresGPUEvidence = true; // a list can't weaken this
    return entry;
}

std::vector<List::Entry> readEntries(const QJsonObject &list)
{
    const auto objects = require(Json::objects(list, "entries"_L1), "entries"_L1);
    require(objects.size() <= entryLimit, "entries"_L1);
    std::vector<List::Entry> entries;
    std::set<QString> ids;
    for (const QJsonObject &object : objects) {
        entries.push_back(readEntry(object));
        if (!ids.insert(entries.back().id).second)
            throw Refusal(Refusal::DuplicateID{entries.back().id});
    }
    return entries;
}

std::set<QString> readRevoked(const QJsonObject &list)
{
    const auto values = require(Json::array(list, "revoked"_L1), "revoked"_L1);
    require(values.size() <= revokedLimit, "revoked"_L1);
    std::set<QString> revoked;
    for (const QJsonValue &value : values) {
        const QString id = value.toString();
        require(List::isIdentifier(id), "revoked"_L1);
        if (!revoked.insert(id).second)
            throw Refusal(Refusal::DuplicateID{id});
    }
    return revoked;
}

QString plainText(Plain plain)
{
    switch (plain) {
    case Plain::tooLarge:
        return u"tooLarge"_s;
    case Plain::signatureMalformed:
        return u"signatureMalformed"_s;
    case Plain::signatureInvalid:
        return u"signatureInvalid"_s;
    case Plain::notJSON:
        return u"notJSON"_s;
    case Plain::unknownFormat:
        return u"unknownFormat"_s;
    case Plain::expired:
        return u"expired"_s;
    }
    return {};
}

struct CaseTextOf {
    QString operator()(const Refusal::UnknownField &e) const
    {
        return CaseText::of("unknownField"_L1, {CaseText::quoted(e.field)});
    }
    QString operator()(const Refusal::MissingField &e) const
    {
        return CaseText::of("missingField"_L1, {CaseText::quoted(e.field)});
    }
    QString operator()(const Refusal::BadValue &e) const
    {
        return CaseText::of("badValue"_L1, {CaseText::quoted(e.key)});
    }
    QString operator()(const Refusal::DuplicateID &e) const
    {
        return CaseText::of("duplicateID"_L1, {CaseText::quoted(e.id)});
    }
    QString operator()(const Refusal::RolledBack &e) const
    {
        return CaseText::of("rolledBack"_L1, {QString::number(e.offered), QString::number(e.floor)});
    }
    QString operator()(const Refusal::SameVersionDifferentList &e) const
    {
        return CaseText::of("sameVersionDifferentList"_L1, {QString::number(e.version)});
    }
    QString operator()(Plain plain) const { return plainText(plain); }
};

} // namespace

QString VeniceSignedMeasurementList::Refusal::caseText() const
{
    return std::visit(CaseTextOf{}, m_case);
}

VeniceSignedMeasurementList VeniceSignedMeasurementList::read(QByteArrayView json, std::int64_t floor)
{
    if (json.size() > sizeLimit)
        throw Refusal(Plain::tooLarge);
    const auto object = Json::parseObject(json);
    if (!object)
        throw Refusal(Plain::notJSON);
    if (Json::integer(*object, "formatVersion"_L1) != formatVersion)
        throw Refusal(Plain::unknownFormat);
    requireKeys(
        *object, "list"_L1,
        {u"formatVersion"_s, u"listVersion"_s, u"issuedAt"_s, u"notAfter"_s, u"entries"_s, u"revoked"_s});

    VeniceSignedMeasurementList list;
    list.listVersion = require(Json::integer(*object, "listVersion"_L1), "listVersion"_L1);
    require(list.listVersion >= 1, "listVersion"_L1);
    if (list.listVersion < floor)
        throw Refusal(Refusal::RolledBack{list.listVersion, floor});
    list.issuedAt = readDate(*object, "issuedAt"_L1);
    list.notAfter = readDate(*object, "notAfter"_L1);
    require(list.notAfter > list.issuedAt, "notAfter"_L1);
    list.entries = readEntries(*object);
    list.revoked = readRevoked(*object);
    return list;
}

VeniceSignedMeasurementList::Signed VeniceSignedMeasurementList::verify(
    QByteArrayView list, QByteArrayView signature, const std::vector<QByteArray> &publicKeys,
    const std::function<std::int64_t(const QByteArray &key)> &floorOf, const std::optional<QDateTime> &date)
{
    if (list.size() > sizeLimit)
        throw Refusal(Plain::tooLarge);
    const QByteArray key = ListSignature::signingKey(list, signature, publicKeys);
    Signed signedList{read(list, floorOf(key)), key};
    if (date && *date >= signedList.list.notAfter)
        throw Refusal(Plain::expired);
    return signedList;
}

bool VeniceSignedMeasurementList::isIdentifier(QStringView text)
{
    return isName(text, 96, u"-.") && isLowerCaseLetterOrDigit(text.front());
}

VeniceMeasurementAllowlist
VeniceSignedMeasurementList::allowlistAt(const QDateTime &date,
                                         const VeniceMeasurementAllowlist &bundled) const
{
    using Source = VeniceMeasurementAllowlist::Source;
    VeniceMeasurementAllowlist allowlist;
    if (date >= notAfter) {
        allowlist.stacksByModel = bundled.stacksByModel;
        allowlist.source = Source(Source::ExpiredList{listVersion, notAfter});
    } else {
        for (const Entry &entry : entries)
            allowlist.stacksByModel[entry.model].push_back(entry.stack);
        allowlist.source = Source(Source::SignedList{listVersion, notAfter});
    }
    return allowlist.withdrawing(revoked);
}

} // namespace morvane
