#include "persistence/SettingsValueCoding.h"

#include "utils/bytes/Base64.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QLocale>

#include <cmath>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Encoder {
    QString operator()(bool value) const { return value ? u"bool:true"_s : u"bool:false"_s; }
    QString operator()(std::int64_t value) const { return u"int:"_s + QString::number(value); }
    QString operator()(double value) const
    {
        return u"real:"_s + QString::number(value, 'g', QLocale::FloatingPointShortest);
    }
    QString operator()(const QString &value) const { return u"text:"_s + value; }
    QString operator()(const QByteArray &value) const
    {
        return u"data:"_s + QString::fromLatin1(Base64::encode(value));
    }
    QString operator()(const QStringList &value) const
    {
        const QJsonDocument json(QJsonArray::fromStringList(value));
        return u"list:"_s + QString::fromUtf8(json.toJson(QJsonDocument::Compact));
    }
};

std::optional<SettingsValue> decodedBoolean(const QString &text)
{
    if (text == "true"_L1)
        return true;
    if (text == "false"_L1)
        return false;
    return std::nullopt;
}

std::optional<SettingsValue> decodedInteger(const QString &text)
{
    bool isValid = false;
    const std::int64_t value = QLocale::c().toLongLong(text, &isValid);
    return isValid ? std::optional<SettingsValue>(value) : std::nullopt;
}

std::optional<SettingsValue> decodedReal(const QString &text)
{
    bool isValid = false;
    const double value = QLocale::c().toDouble(text, &isValid);
    return isValid && std::isfinite(value) ? std::optional<SettingsValue>(value) : std::nullopt;
}

std::optional<SettingsValue> decodedData(const QString &text)
{
    const auto bytes = Base64::decode(text.toUtf8());
    return bytes ? std::optional<SettingsValue>(*bytes) : std::nullopt;
}

std::optional<SettingsValue> decodedList(const QString &text)
{
    const QJsonDocument json = QJsonDocument::fromJson(text.toUtf8());
    if (!json.isArray())
        return std::nullopt;
    QStringList list;
    for (const auto &element : json.array()) {
        if (!element.isString())
            return std::nullopt;
        list.append(element.toString());
    }
    return list;
}

} // namespace

QString SettingsValueCoding::encode(const SettingsValue &value)
{
    return std::visit(Encoder(), value);
}

std::optional<SettingsValue> SettingsValueCoding::decode(const QString &text)
{
    const qsizetype colon = text.indexOf(u':');
    if (colon < 0)
        return std::nullopt;
    const QStringView type = QStringView(text).first(colon);
    const QString rest = text.sliced(colon + 1);
    if (type == "text"_L1)
        return rest;
    if (type == "bool"_L1)
        return decodedBoolean(rest);
    if (type == "int"_L1)
        return decodedInteger(rest);
    if (type == "real"_L1)
        return decodedReal(rest);
    if (type == "data"_L1)
        return decodedData(rest);
    if (type == "list"_L1)
        return decodedList(rest);
    return std::nullopt;
}

} // namespace morvane
