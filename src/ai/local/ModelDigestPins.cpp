#include "ai/local/ModelDigestPins.h"

#include "utils/files/PrivateFile.h"
#include "utils/log/Log.h"
#include "utils/text/Json.h"

#include <QJsonDocument>

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype largestFile = qsizetype{4} << 20; // some 30,000 models

QMap<QString, QString> read(const QString &path)
{
    QMap<QString, QString> digests;
    try {
        const auto contents = PrivateFile::read(path, largestFile);
        const auto root = contents ? Json::parseObject(*contents) : std::nullopt;
        const QJsonObject pins =
            root ? Json::object(*root, "digests"_L1).value_or(QJsonObject()) : QJsonObject();
        for (auto pin = pins.begin(); pin != pins.end(); ++pin)
            if (pin.value().isString())
                digests.insert(pin.key(), pin.value().toString());
    } catch (const FileError &) {
        // As one that is missing: what is there now counts as seen first.
    }
    return digests;
}

} // namespace

ModelDigestPins::ModelDigestPins(QString path)
    : m_path(std::move(path))
    , m_digests(read(m_path))
{}

std::vector<ModelDigestPins::Change> ModelDigestPins::compare(const std::vector<ServerModel> &models)
{
    std::vector<Change> changes;
    bool isNew = false;
    for (const ServerModel &model : models) {
        if (model.digest.isEmpty())
            continue;
        const auto pin = m_digests.constFind(model.name);
        if (pin == m_digests.constEnd()) {
            m_digests.insert(model.name, model.digest);
            isNew = true;
        } else if (*pin != model.digest) {
            changes.push_back({model.name, *pin, model.digest});
        }
    }
    if (isNew)
        save();
    return changes;
}

void ModelDigestPins::accept(const Change &change)
{
    m_digests.insert(change.model, change.found);
    save();
}

void ModelDigestPins::forget(const QString &model)
{
    if (m_digests.remove(model) > 0)
        save();
}

void ModelDigestPins::save() const
{
    QJsonObject pins;
    for (auto pin = m_digests.begin(); pin != m_digests.end(); ++pin)
        pins.insert(pin.key(), pin.value());
    try {
        PrivateFile::write(m_path, QJsonDocument(QJsonObject{{u"digests"_s, pins}}).toJson());
    } catch (const FileError &error) {
        Log::error(Log::Category::AIProvider, "Model fingerprints: not saved (%{public}s)"_L1,
                   {error.what()});
    }
}

} // namespace morvane
