#include "ai/local/LocalRuntimeValues.h"

#include "deployment/DeploymentValues.h"
#include "utils/text/Json.h"
#include "utils/text/Product.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSysInfo>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Archive = LocalRuntimeValues::Archive;

bool isDigest(const QString &text)
{
    return text.size() == 64 && std::all_of(text.begin(), text.end(), [](QChar c) {
               return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f');
           });
}

// A name becomes part of an address and of nothing else, but a slash in it is a slip in any case.
std::optional<Archive> archiveIn(const QJsonObject &object, QLatin1StringView nameKey)
{
    const auto name = Json::string(object, nameKey);
    const auto digest = Json::string(object, "sha256"_L1);
    const bool isWhole = name && !name->isEmpty() && !name->contains(u'/') && digest && isDigest(*digest);
    return isWhole ? std::optional(Archive{*name, *digest, Json::integer(object, "bytes"_L1)}) : std::nullopt;
}

std::optional<Archive> deployedArchive(const QString &architecture)
{
    const QByteArray json(DeploymentValues::localRuntimeArchives.data(),
                          DeploymentValues::localRuntimeArchives.size());
    const QJsonArray archives = QJsonDocument::fromJson(json).array();
    for (const auto &entry : archives)
        if (Json::string(entry.toObject(), "architecture"_L1) == architecture)
            return archiveIn(entry.toObject(), "name"_L1);
    return std::nullopt;
}

std::optional<QUrl> loopbackOrigin(const QJsonObject &object, QLatin1StringView key)
{
    const QUrl url(Json::string(object, key).value_or(QString()), QUrl::StrictMode);
    const bool isOrigin = url.scheme() == "http"_L1 && url.port() > 0 && url.path().isEmpty() &&
                          !url.hasQuery() && !url.hasFragment() && url.userInfo().isEmpty();
    const bool isHere = url.host() == "127.0.0.1"_L1 || url.host() == "localhost"_L1;
    return isOrigin && isHere ? std::optional(url) : std::nullopt;
}

std::optional<QStringList> absolutePaths(const QJsonArray &array)
{
    QStringList paths;
    for (const auto &path : array) {
        if (!QDir::isAbsolutePath(path.toString()))
            return std::nullopt;
        paths += path.toString();
    }
    return paths;
}

} // namespace

QUrl LocalRuntimeValues::archiveURL() const
{
    QUrl url = releaseOrigin;
    if (archive)
        url.setPath(u"/ollama/ollama/releases/download/v%1/%2"_s.arg(version, archive->name));
    return url;
}

LocalRuntimeValues LocalRuntimeValues::ofThisBuild(const SupportFolders &folders)
{
    return {.version = DeploymentValues::localRuntimeVersion,
            .releaseOrigin = QUrl(DeploymentValues::localRuntimeReleases),
            .archive = deployedArchive(QSysInfo::buildCpuArchitecture()),
            .serverOrigin = QUrl(u"http://localhost:11434"_s),
            .foundRuntimes = {u"/usr/local/bin/ollama"_s, u"/usr/bin/ollama"_s,
                              QDir::homePath() + u"/.local/bin/ollama"_s, u"/opt/ollama/bin/ollama"_s},
            .folder = folders.data + u'/' + Product::storeFolder,
            .models = qEnvironmentVariable("OLLAMA_MODELS", QDir::homePath() + u"/.ollama"_s),
            .guard = QCoreApplication::applicationDirPath() + u"/morvane-runtime-guard"_s};
}

std::optional<LocalRuntimeValues> LocalRuntimeValues::withDevelopmentFile(QByteArrayView json) const
{
    static const QStringList known{u"releaseOrigin"_s, u"serverOrigin"_s, u"archive"_s,
                                   u"sha256"_s,        u"bytes"_s,        u"foundRuntimes"_s};
    const auto object = Json::parseObject(json);
    if (!object)
        return std::nullopt;
    const QStringList keys = object->keys();
    const bool isKnown =
        std::all_of(keys.begin(), keys.end(), [](const QString &key) { return known.contains(key); });
    const auto release = loopbackOrigin(*object, "releaseOrigin"_L1);
    const auto server = loopbackOrigin(*object, "serverOrigin"_L1);
    const auto found = absolutePaths(Json::array(*object, "foundRuntimes"_L1).value_or(QJsonArray()));
    if (!isKnown || !release || !server || !found)
        return std::nullopt;
    LocalRuntimeValues values = *this;
    values.releaseOrigin = *release;
    values.serverOrigin = *server;
    values.foundRuntimes = *found;
    values.archive = archiveIn(*object, "archive"_L1);
    return values;
}

} // namespace morvane
