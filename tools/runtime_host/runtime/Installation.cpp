#include "Installation.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString root()
{
    return QFileInfo(QFileInfo(Installation::binary()).path()).path();
}

QByteArray digestOf(const QString &path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    return file.open(QIODevice::ReadOnly) && hash.addData(&file) ? hash.result().toHex() : QByteArray();
}

} // namespace

QString Installation::binary()
{
    return QFile::symLinkTarget(u"/proc/self/exe"_s);
}

QJsonObject Installation::practice()
{
    QFile file(root() + u"/lib/ollama/practice.json"_s);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

bool Installation::isWhole()
{
    const QJsonObject contents = practice()["contents"_L1].toObject();
    for (auto file = contents.begin(); file != contents.end(); ++file) {
        if (QString::fromLatin1(digestOf(root() + u'/' + file.key())) != file.value().toString())
            return false;
    }
    return !contents.isEmpty();
}

} // namespace morvane
