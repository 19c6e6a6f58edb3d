#include "attestation/VeniceMeasurementListStore.h"

#include "security/SealedForm.h"
#include "utils/bytes/Base64.h"
#include "utils/files/PrivateFile.h"
#include "utils/log/Log.h"
#include "utils/text/Json.h"
#include "utils/text/Product.h"
#include "utils/text/UniversalTime.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using State = VeniceMeasurementListStore::State;

// A list and its signature at their limits, in base64 and sealed.
constexpr qsizetype sizeLimit = qsizetype{2} << 20;

std::optional<QByteArray> bytesIn(const QJsonObject &object, QLatin1StringView key)
{
    const auto text = Json::string(object, key);
    return text ? Base64::decode(*text) : std::nullopt;
}

State stateIn(const QByteArray &plain)
{
    const QJsonObject object = Json::parseObject(plain).value_or(QJsonObject());
    State state{bytesIn(object, "list"_L1), bytesIn(object, "signature"_L1), std::nullopt};
    if (const auto seconds = Json::number(object, "lastFetchAt"_L1))
        state.lastFetchAt = UniversalTime::ofMilliseconds(static_cast<qint64>(*seconds * 1000));
    return state;
}

QByteArray json(const State &state)
{
    QJsonObject object;
    if (state.list)
        object.insert("list"_L1, QString::fromLatin1(Base64::encode(*state.list)));
    if (state.signature)
        object.insert("signature"_L1, QString::fromLatin1(Base64::encode(*state.signature)));
    if (state.lastFetchAt)
        object.insert("lastFetchAt"_L1, static_cast<double>(state.lastFetchAt->toMSecsSinceEpoch()) / 1000);
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

void moveUnlessTaken(const QString &from, const QString &to)
{
    const QFileInfo former(from);
    if (!former.isFile() || former.isSymLink() || QFileInfo::exists(to))
        return;
    try {
        PrivateFile::move(from, to);
    } catch (const FileError &error) {
        Log::error(Log::Category::App, "Accepted servers list: not moved to its place (%{public}s)"_L1,
                   {error.what()});
    }
}

} // namespace

const QString VeniceMeasurementListStore::fileName = u"accepted-servers.sealed"_s;
const QString VeniceMeasurementListStore::developmentFileName = u"accepted-servers-dev.sealed"_s;
const QString VeniceMeasurementListStore::formerFileName = u"venice-measurements.json"_s;

VeniceMeasurementListStore::VeniceMeasurementListStore(const LocalDataVault &vault,
                                                       std::optional<QString> directory, QString name)
    : m_vault(vault)
    , m_directory(std::move(directory))
    , m_name(std::move(name))
{}

QString VeniceMeasurementListStore::path() const
{
    return *m_directory + u'/' + m_name;
}

VeniceMeasurementListStore::Loaded VeniceMeasurementListStore::load() const
{
    try {
        const auto contents = m_directory ? PrivateFile::read(path(), sizeLimit) : std::nullopt;
        if (!contents)
            return State();
        if (!SealedForm::isSealedFile(*contents)) {
            Log::error(Log::Category::AIProvider,
                       "Accepted servers list: the saved state is not sealed, so it is ignored"_L1);
            return State();
        }
        if (m_vault.isLocked())
            return Locked();
        const auto plain = m_vault.open(*contents);
        return plain ? stateIn(*plain) : State();
    } catch (const FileError &) {
        return State();
    }
}

void VeniceMeasurementListStore::save(const State &state) const
{
    if (!m_directory)
        return;
    try {
        LocalDataVault::writePrivate(m_vault.seal(json(state)), path());
    } catch (const std::exception &error) {
        Log::error(Log::Category::AIProvider, "Accepted servers list: not saved (%{public}s)"_L1,
                   {error.what()});
    }
}

QString VeniceMeasurementListStore::defaultDirectory(const SupportFolders &folders)
{
    return folders.data + u'/' + Product::serviceName;
}

void VeniceMeasurementListStore::settleFormerFiles(const SupportFolders &folders)
{
    const QString place = defaultDirectory(folders);
    const QString former = folders.data + u'/' + Product::storeFolder;
    for (const QString &name : {fileName, developmentFileName})
        moveUnlessTaken(former + u'/' + name, place + u'/' + name);
    for (const QString &folder : {former, place}) {
        if (QFile::remove(folder + u'/' + formerFileName))
            Log::info(Log::Category::App,
                      "Removed the unsigned server list an older build read; Morvane's signed "
                      "list replaced it"_L1);
    }
}

} // namespace morvane
