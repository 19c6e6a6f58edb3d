#include "persistence/DepartedData.h"

#include "utils/log/Log.h"
#include "utils/text/Product.h"

#include <QDir>

#include <algorithm>
#include <array>
#include <filesystem>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr auto category = Log::Category::Persistence;

constexpr std::array codingEngineItems{"claude-code-scan.json"_L1, "code-confinement"_L1, "terminal"_L1};
constexpr std::array codingEngineKeys{"codeDefaultEngine"_L1, "codeVerifiedEngines"_L1, "codeClaudeModel"_L1,
                                      "codeCodexModel"_L1};

constexpr std::array departedFiles{
    "email-accounts.json"_L1, "email-cache.json"_L1,    "subscriptions.json"_L1, "telegram-notebook.json"_L1,
    "learn.json"_L1,          "recurring-jobs.json"_L1, "routines.json"_L1,      "price-alerts.json"_L1};
constexpr std::array departedPrefixes{"gift-people"_L1, "learn-last-unparseable-"_L1};
constexpr std::array departedKeys{
    "hostedForUtility"_L1,      "hostedUtilityModel"_L1, "telegramPrivateMode"_L1, "emailPrivateMode"_L1,
    "statementsPrivateMode"_L1, "learnPrivateMode"_L1,   "browsePrivateMode"_L1,   "hiddenDockModules"_L1,
    "emailLoadRemoteImages"_L1, "marketChartStyle"_L1,   "marketIndicators"_L1,    "proactiveEnabled"_L1,
    "lastProactiveCheckIn"_L1};

QString supportFolder(const SupportFolders &folders)
{
    return folders.data + u'/' + Product::storeFolder;
}

enum class Removal { Nothing, Done, Failed };

// A link goes itself, and not what it points to.
Removal removeItem(const QString &path, QString &failure)
{
    std::error_code error;
    const auto count = std::filesystem::remove_all(QFile::encodeName(path).toStdString(), error);
    if (error) {
        failure = QString::fromStdString(error.message());
        return Removal::Failed;
    }
    return count > 0 ? Removal::Done : Removal::Nothing;
}

bool removeLogged(const QString &folder, const QString &name, QLatin1StringView done,
                  QLatin1StringView failed)
{
    QString failure;
    switch (removeItem(folder + u'/' + name, failure)) {
    case Removal::Nothing:
        return false;
    case Removal::Done:
        Log::info(category, done, {name});
        return true;
    case Removal::Failed:
        Log::error(category, failed, {failure});
        return false;
    }
    return false;
}

void finish(SettingsRepository &defaults, std::span<const QLatin1StringView> keys, QLatin1StringView flag)
{
    for (const QLatin1StringView key : keys)
        defaults.remove(key);
    defaults.setBoolean(flag, true);
    defaults.flush();
}

bool isDeparted(const QString &name)
{
    return std::ranges::find(departedFiles, name) != departedFiles.end() ||
           std::ranges::any_of(departedPrefixes,
                               [&](QLatin1StringView prefix) { return name.startsWith(prefix); });
}

} // namespace

std::span<const QLatin1StringView> DepartedData::moduleFiles()
{
    return departedFiles;
}

std::span<const QLatin1StringView> DepartedData::moduleFilePrefixes()
{
    return departedPrefixes;
}

void DepartedData::removeCodingEngineOnce(const SupportFolders &folders, SettingsRepository &defaults)
{
    if (defaults.boolean(codingEngineFlagKey).value_or(false))
        return;
    for (const QLatin1StringView item : codingEngineItems)
        removeLogged(supportFolder(folders), item, "Removed leftover coding-engine data: %{public}s"_L1,
                     "Could not remove leftover coding-engine data: %s"_L1);
    finish(defaults, codingEngineKeys, codingEngineFlagKey);
}

void DepartedData::removeModulesOnce(const SupportFolders &folders, SettingsRepository &defaults)
{
    if (defaults.boolean(modulesFlagKey).value_or(false))
        return;
    const QString folder = supportFolder(folders);
    int removed = 0;
    for (const QString &name : QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System)) {
        if (isDeparted(name) && removeLogged(folder, name, "Removed a departed module's store: %{public}s"_L1,
                                             "Could not remove a departed module's store: %s"_L1))
            ++removed;
    }
    Log::info(category, "Removed %ld store(s) the departed modules left"_L1, {removed});
    finish(defaults, departedKeys, modulesFlagKey);
}

} // namespace morvane
