#include "PracticeFolder.h"

#include "Installation.h"

#include <QFile>
#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

PracticeFolder PracticeFolder::ofThisProgram()
{
    const QString path = qEnvironmentVariable("MORVANE_RUNTIME_FOLDER");
    return PracticeFolder(path.isEmpty() ? Installation::practiceFolder() : path);
}

QString PracticeFolder::scenario() const
{
    QFile file(m_path + u"/scenario"_s);
    if (!m_path.isEmpty() && file.open(QIODevice::ReadOnly))
        return QString::fromUtf8(file.readAll()).trimmed();
    return qEnvironmentVariable("MORVANE_RUNTIME_SCENARIO", u"good"_s);
}

void PracticeFolder::note(QJsonObject event) const
{
    QFile file(m_path + u"/journal"_s);
    if (!m_path.isEmpty() && file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered))
        file.write(QJsonDocument(event).toJson(QJsonDocument::Compact) + '\n');
}

bool PracticeFolder::wasMarked(const QString &mark) const
{
    QFile file(m_path + u'/' + mark);
    return !file.open(QIODevice::WriteOnly | QIODevice::NewOnly);
}

} // namespace morvane
