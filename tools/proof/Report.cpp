#include "Report.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString markOf(Report::Result result)
{
    switch (result) {
    case Report::Result::Ok:
        return u"ok     "_s;
    case Report::Result::Failed:
        return u"FAILED "_s;
    case Report::Result::NotReached:
        return u"  -    "_s;
    }
    return {};
}

QString wordOf(Report::Result result)
{
    switch (result) {
    case Report::Result::Ok:
        return u"ok"_s;
    case Report::Result::Failed:
        return u"failed"_s;
    case Report::Result::NotReached:
        return u"notReached"_s;
    }
    return {};
}

} // namespace

void Report::addField(const QString &name, const QString &value)
{
    m_fields.push_back({name, value});
}

void Report::addCheck(const QString &claim, Result result)
{
    m_checks.push_back({claim, result});
}

void Report::addRemark(const QString &remark)
{
    m_remarks.append(remark);
}

QString Report::body() const
{
    QString text = m_title + u"\n"_s;
    for (const QString &remark : m_remarks)
        text += u"\n"_s + remark + u"\n"_s;
    qsizetype width = 0;
    for (const Line &field : m_fields)
        width = std::max(width, field.name.size());
    if (!m_fields.empty())
        text += u"\nWhat it says\n"_s;
    for (const Line &field : m_fields)
        text += u"  "_s + field.name.leftJustified(width + 2) + field.value + u"\n"_s;
    if (!m_checks.empty())
        text += u"\nWhat was checked, in this order\n"_s;
    for (const CheckLine &check : m_checks)
        text += u"  "_s + markOf(check.result) + check.claim + u"\n"_s;
    if (!m_notChecked.isEmpty())
        text += u"\nWhat was not checked\n"_s;
    for (const QString &line : m_notChecked)
        text += u"  "_s + line + u"\n"_s;
    return text;
}

QString Report::text() const
{
    QString text = body();
    for (const Report &row : m_rows)
        text += u"\n"_s + row.body();
    text += u"\n"_s;
    for (std::size_t i = 0; i < m_rows.size(); ++i)
        text += u"row %1 verdict: "_s.arg(i + 1) + m_rows[i].m_verdict + u"\n"_s;
    return text + u"verdict: "_s + m_verdict + u"\n"_s;
}

QJsonObject Report::json() const
{
    QJsonObject fields;
    for (const Line &field : m_fields)
        fields.insert(field.name, field.value);
    QJsonArray checks;
    for (const CheckLine &check : m_checks)
        checks.append(QJsonObject{{u"claim"_s, check.claim}, {u"result"_s, wordOf(check.result)}});
    QJsonObject object{{u"title"_s, m_title},
                       {u"fields"_s, fields},
                       {u"checks"_s, checks},
                       {u"notChecked"_s, QJsonArray::fromStringList(m_notChecked)},
                       {u"remarks"_s, QJsonArray::fromStringList(m_remarks)},
                       {u"verdict"_s, m_verdict}};
    QJsonArray rows;
    for (const Report &row : m_rows)
        rows.append(row.json());
    if (!rows.isEmpty())
        object.insert(u"rows"_s, rows);
    return object;
}

} // namespace morvane
