#include "loopback/AnswerScript.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

bool fits(const QJsonObject &answer, const QJsonObject &asked)
{
    for (auto key = asked.begin(); key != asked.end(); ++key) {
        const QJsonValue wanted = answer.value(key.key());
        if (wanted.isString() && wanted != key.value())
            return false;
    }
    return true;
}

} // namespace

bool AnswerScript::load(const QString &path, QString &problem)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        problem = u"Cannot read %1."_s.arg(path);
        return false;
    }
    QJsonParseError error;
    const auto document = QJsonDocument::fromJson(file.readAll(), &error);
    const QJsonValue answers = document.object().value("responses"_L1);
    if (error.error != QJsonParseError::NoError || !answers.isArray()) {
        problem = u"%1 is not a scenario file: it needs an object with a list \"responses\"."_s.arg(path);
        return false;
    }
    for (const QJsonValue answer : answers.toArray())
        m_entries.push_back({answer.toObject(), answer["times"_L1].toInt(-1)});
    return true;
}

std::optional<QJsonObject> AnswerScript::take(const QJsonObject &asked)
{
    for (Entry &entry : m_entries) {
        if (entry.timesLeft == 0 || !fits(entry.answer, asked))
            continue;
        if (entry.timesLeft > 0)
            --entry.timesLeft;
        return entry.answer;
    }
    return std::nullopt;
}

} // namespace morvane
