#include "persistence/SettingsStore.h"

#include "utils/text/Json.h"

#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString instructionsKey = u"customSystemPrompt"_s;
const QString personasKey = u"characterPersonas"_s;

struct Persona {
    QString name;
    QString personality;
};

// Personas by character; one that isn't a persona makes the whole unreadable.
std::map<QString, Persona> personas(const QByteArray &json)
{
    const auto object = Json::parseObject(json);
    if (!object)
        return {};
    std::map<QString, Persona> read;
    for (auto entry = object->begin(); entry != object->end(); ++entry) {
        const QJsonObject persona = entry->toObject();
        const auto name = Json::string(persona, "name"_L1);
        const auto personality = Json::string(persona, "personality"_L1);
        if (!name || !personality)
            return {};
        read.emplace(entry.key(), Persona{*name, *personality});
    }
    return read;
}

Persona chosen(const std::map<QString, Persona> &personas, const QString &character)
{
    if (personas.empty())
        return {};
    for (const QString &id : {character, u"companion"_s}) {
        if (const auto found = personas.find(id); found != personas.end())
            return found->second;
    }
    return personas.begin()->second;
}

} // namespace

SettingsStore::SettingsStore(SettingsRepository &repository, QObject *parent)
    : QObject(parent)
    , m_repository(repository)
{}

void SettingsStore::reload()
{
    for (const auto &reloadOne : m_reloads)
        reloadOne();
}

std::optional<SettingsStore::LegacyPersona> SettingsStore::legacyPersona() const
{
    const QString instructions = m_repository.string(instructionsKey).value_or(QString());
    const auto known = personas(m_repository.data(personasKey).value_or(QByteArray()));
    if (instructions.isEmpty() && known.empty())
        return std::nullopt;
    const Persona persona = chosen(known, selectedCharacterID().value_or(QString()));
    return LegacyPersona{instructions, persona.name, persona.personality};
}

void SettingsStore::forgetLegacyPersona()
{
    m_repository.remove(instructionsKey);
    m_repository.remove(personasKey);
}

QString SettingsStore::versionText()
{
    return QStringLiteral(MORVANE_VERSION);
}

} // namespace morvane
