#include "attestation/VeniceMeasurementListAnchor.h"

#include "attestation/evidence/VeniceSignedMeasurementList.h"
#include "utils/bytes/Base64.h"
#include "utils/text/Json.h"

#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Anchor = VeniceMeasurementListAnchor;

QString nameOf(const QByteArray &key)
{
    return QString::fromLatin1(Base64::encode(key));
}

bool isKeyName(const QString &name)
{
    const auto key = Base64::decode(name);
    return key && key->size() == 32;
}

std::optional<Anchor::Mark> markIn(const QJsonObject &object)
{
    const auto version = Json::integer(object, "version"_L1);
    const auto sha256 = Json::string(object, "sha256"_L1);
    if (object.size() != 2 || !version || *version < 1 || !sha256)
        return std::nullopt;
    return Anchor::Mark{*version, *sha256};
}

std::optional<std::map<QString, Anchor::Mark>> marksIn(const QJsonObject &object)
{
    std::map<QString, Anchor::Mark> marks;
    for (const QString &name : object.keys()) {
        const auto mark = markIn(object.value(name).toObject());
        if (!mark || !isKeyName(name))
            return std::nullopt;
        marks.emplace(name, *mark);
    }
    return marks;
}

std::optional<std::set<QString>> revokedIn(const QJsonArray &array)
{
    std::set<QString> revoked;
    for (const QJsonValue &value : array) {
        if (!VeniceSignedMeasurementList::isIdentifier(value.toString()))
            return std::nullopt;
        revoked.insert(value.toString());
    }
    return revoked;
}

} // namespace

std::optional<Anchor::Mark> VeniceMeasurementListAnchor::markOf(const QByteArray &key) const
{
    const auto mark = marks.find(nameOf(key));
    return mark == marks.end() ? std::nullopt : std::optional(mark->second);
}

std::int64_t VeniceMeasurementListAnchor::floorOf(const QByteArray &key) const
{
    return markOf(key).value_or(Mark()).version;
}

Anchor VeniceMeasurementListAnchor::after(const QByteArray &key, const Mark &mark,
                                          const std::set<QString> &withdrawn) const
{
    Anchor next = *this;
    next.marks[nameOf(key)] = mark;
    next.revoked.insert(withdrawn.begin(), withdrawn.end());
    return next;
}

QString VeniceMeasurementListAnchor::json() const
{
    QJsonObject markObjects;
    for (const auto &[name, mark] : marks)
        markObjects.insert(
            name, QJsonObject{{u"version"_s, static_cast<qint64>(mark.version)}, {u"sha256"_s, mark.sha256}});
    QJsonArray identifiers;
    for (const QString &id : revoked)
        identifiers.append(id);
    const QJsonObject object{{u"marks"_s, markObjects}, {u"revoked"_s, identifiers}};
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

std::optional<Anchor> VeniceMeasurementListAnchor::read(const QString &json)
{
    const auto object = Json::parseObject(json.toUtf8());
    const auto marks = object ? Json::object(*object, "marks"_L1) : std::nullopt;
    const auto revoked = object ? Json::array(*object, "revoked"_L1) : std::nullopt;
    if (!marks || !revoked || object->size() != 2)
        return std::nullopt;
    auto readMarks = marksIn(*marks);
    auto readRevoked = revokedIn(*revoked);
    if (!readMarks || !readRevoked)
        return std::nullopt;
    return Anchor{*std::move(readMarks), *std::move(readRevoked)};
}

} // namespace morvane
