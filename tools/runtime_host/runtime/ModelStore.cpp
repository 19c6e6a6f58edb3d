#include "ModelStore.h"

#include <QCryptographicHash>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QUrl>

#include <stdexcept>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString partial = u"-partial"_s;

[[noreturn]] void fail(const QString &doing, const QFileDevice &file)
{
    const QString words = u"%1 %2: %3"_s.arg(doing, file.fileName(), file.errorString().toLower());
    throw std::runtime_error(words.toStdString());
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray digestOf(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

} // namespace

ModelStore::ModelStore(QString folder)
    : m_folder(std::move(folder))
{}

QString ModelStore::blob(const QString &digest) const
{
    return m_folder + u"/blobs/sha256-"_s + digest;
}

QString ModelStore::manifest(const QString &model) const
{
    const QString tagged = model.contains(u':') ? model : model + u":latest"_s;
    return m_folder + u"/manifests/"_s + QString::fromLatin1(tagged.toUtf8().toPercentEncoding(":"));
}

void ModelStore::makeFolders() const
{
    for (const QString &folder : {u"/blobs"_s, u"/manifests"_s}) {
        if (!QDir().mkpath(m_folder + folder))
            throw std::runtime_error("mkdir " + (m_folder + folder).toStdString() + ": permission denied");
    }
}

QStringList ModelStore::layersOf(const QString &manifest) const
{
    QStringList digests;
    for (const QJsonValue layer : QJsonDocument::fromJson(contents(manifest))["layers"_L1].toArray())
        digests += layer["digest"_L1].toString();
    return digests;
}

std::vector<ModelStore::Model> ModelStore::models() const
{
    std::vector<Model> models;
    for (const QString &name : QDir(m_folder + u"/manifests"_s).entryList(QDir::Files)) {
        const QByteArray manifest = contents(m_folder + u"/manifests/"_s + name);
        Model model{QUrl::fromPercentEncoding(name.toLatin1()), 0, QString::fromLatin1(digestOf(manifest))};
        for (const QJsonValue layer : QJsonDocument::fromJson(manifest)["layers"_L1].toArray())
            model.size += layer["size"_L1].toInteger();
        models.push_back(std::move(model));
    }
    return models;
}

qint64 ModelStore::has(const PretendRegistry::Layer &layer) const
{
    const QString path = blob(QString::fromLatin1(layer.digest));
    if (QFile::exists(path))
        return layer.size;
    const qint64 size = QFileInfo(path + partial).size();
    return std::min(layer.size, size - size % PretendRegistry::portion);
}

void ModelStore::append(const PretendRegistry::Layer &layer, const QByteArray &bytes) const
{
    makeFolders();
    const qint64 end = has(layer);
    QFile file(blob(QString::fromLatin1(layer.digest)) + partial);
    if (!file.open(QIODevice::ReadWrite | QIODevice::Unbuffered) || !file.seek(end))
        fail(u"open"_s, file);
    if (file.write(bytes) != bytes.size())
        fail(u"write"_s, file);
}

void ModelStore::verify(const PretendRegistry::Layer &layer) const
{
    const QString path = blob(QString::fromLatin1(layer.digest));
    if (QFile::exists(path))
        return;
    if (digestOf(contents(path + partial)) != layer.digest) {
        QFile::remove(path + partial);
        throw std::runtime_error("digest mismatch, file must be downloaded again");
    }
    QFile file(path + partial);
    if (!file.rename(path))
        fail(u"rename"_s, file);
}

void ModelStore::writeManifest(const QString &model, const std::vector<PretendRegistry::Layer> &layers) const
{
    QJsonArray list;
    for (const PretendRegistry::Layer &layer : layers)
        list.append(QJsonObject{{u"digest"_s, QString::fromLatin1(layer.digest)}, {u"size"_s, layer.size}});
    QSaveFile file(manifest(model));
    file.open(QIODevice::WriteOnly);
    file.write(QJsonDocument(QJsonObject{{u"layers"_s, list}}).toJson());
    if (!file.commit())
        fail(u"write"_s, file);
}

bool ModelStore::remove(const QString &model) const
{
    const QStringList layers = layersOf(manifest(model));
    if (!QFile::remove(manifest(model)))
        return false;
    QStringList used;
    for (const QString &name : QDir(m_folder + u"/manifests"_s).entryList(QDir::Files))
        used += layersOf(m_folder + u"/manifests/"_s + name);
    for (const QString &layer : layers) {
        if (!used.contains(layer))
            QFile::remove(blob(layer));
    }
    return true;
}

} // namespace morvane
