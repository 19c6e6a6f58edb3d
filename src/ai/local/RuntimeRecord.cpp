#include "ai/local/RuntimeRecord.h"

#include "ai/local/FileDigest.h"
#include "utils/files/PrivateFile.h"
#include "utils/text/Json.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonDocument>

#include <array>
#include <cerrno>
#include <climits>

#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QJsonObject objectOf(const QMap<QString, QString> &map)
{
    QJsonObject object;
    for (auto entry = map.begin(); entry != map.end(); ++entry)
        object.insert(entry.key(), entry.value());
    return object;
}

std::optional<QMap<QString, QString>> mapIn(const QJsonObject &root, QLatin1StringView key)
{
    const auto object = Json::object(root, key);
    if (!object)
        return std::nullopt;
    QMap<QString, QString> map;
    for (auto entry = object->begin(); entry != object->end(); ++entry)
        map.insert(entry.key(), entry.value().toString());
    return map;
}

// As it is written; Qt makes it absolute.
QString targetOf(const QString &link)
{
    std::array<char, PATH_MAX> target{};
    const ssize_t size = ::readlink(QFile::encodeName(link).constData(), target.data(), target.size());
    if (size < 0)
        throw FileError(FileError::Operation::Read, errno);
    return QFile::decodeName(QByteArray(target.data(), size));
}

} // namespace

QByteArray RuntimeRecord::json() const
{
    return QJsonDocument(QJsonObject{{u"version"_s, version},
                                     {u"files"_s, objectOf(files)},
                                     {u"links"_s, objectOf(links)}})
        .toJson(QJsonDocument::Compact);
}

std::optional<RuntimeRecord> RuntimeRecord::parse(const QByteArray &json)
{
    const auto root = Json::parseObject(json);
    if (!root)
        return std::nullopt;
    const auto version = Json::string(*root, "version"_L1);
    const auto files = mapIn(*root, "files"_L1);
    const auto links = mapIn(*root, "links"_L1);
    return version && files && links ? std::optional(RuntimeRecord{*version, *files, *links}) : std::nullopt;
}

RuntimeRecord RuntimeRecord::of(const QString &folder, const QString &version, const std::stop_token &stop)
{
    RuntimeRecord record;
    record.version = version;
    const QDir root(folder);
    for (const QString &part : {u"bin"_s, u"lib"_s}) {
        if (QFileInfo(root.filePath(part)).isSymLink())
            throw FileError(FileError::Operation::Open, ELOOP);
        QDirIterator entries(root.filePath(part),
                             QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            const QString path = entries.next();
            const QFileInfo info = entries.fileInfo();
            if (info.isSymLink())
                record.links.insert(root.relativeFilePath(path), targetOf(path));
            else if (info.isFile())
                record.files.insert(root.relativeFilePath(path), FileDigest::sha256(path, stop));
            else if (!info.isDir())
                throw FileError(FileError::Operation::Open, EINVAL);
        }
    }
    return record;
}

} // namespace morvane
