#include "ai/prompts/SystemPromptStore.h"

#include "ai/prompts/SystemPrompt.h"
#include "persistence/SettingsStore.h"
#include "security/LocalDataVault.h"
#include "utils/files/PrivateFile.h"
#include "utils/log/Log.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"
#include "utils/text/Text.h"

#include <QFileInfo>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype largestFile = qsizetype{16} * 1024 * 1024; // bytes; far beyond what any model reads

// The instructions that an older build held, with the personality of its ghost folded in.
QString folded(const SettingsStore::LegacyPersona &persona)
{
    const QString instructions = Text::trimmed(persona.instructions);
    const QString personality = Text::trimmed(persona.personality);
    if (instructions.isEmpty() || personality.isEmpty())
        return instructions + personality;
    return instructions + u"\n\nYour personality: "_s + personality;
}

void logWriteFailure(const char *reason)
{
    Log::error(Log::Category::App, "Instructions: could not write file: %s"_L1, {reason});
}

} // namespace

SystemPromptStore::SystemPromptStore(SettingsStore &settings, const LocalDataVault &vault,
                                     const std::optional<QString> &filePath, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_vault(vault)
    , m_filePath(filePath ? *filePath : path(SupportFolders::standard()))
{
    try {
        PrivateFile::createFolder(QFileInfo(m_filePath).path());
    } catch (const FileError &) {
        // The first save says so.
    }
    load();
}

QString SystemPromptStore::path(const SupportFolders &folders)
{
    return folders.data + u'/' + Product::serviceName + u"/instructions.txt"_s;
}

void SystemPromptStore::load()
{
    if (m_vault.isLocked())
        return;
    const auto text = stored();
    if (!text)
        Log::error(Log::Category::App,
                   "Instructions: the file is sealed with a key this Mac no longer has"_L1);
    setLoadFailed(!text);
    hold(text.value_or(QString()));
    takeOverFormerInstructions();
}

void SystemPromptStore::conceal()
{
    hold({});
}

void SystemPromptStore::setPrompt(const QString &prompt)
{
    if (prompt == m_prompt)
        return;
    hold(prompt);
    static_cast<void>(save());
}

QString SystemPromptStore::effectivePrompt() const
{
    const QString instructions = Text::trimmed(m_prompt);
    return instructions.isEmpty() ? SystemPrompt::defaultPrompt() : instructions;
}

QString SystemPromptStore::loadFailedMessage()
{
    return u"Your saved instructions are sealed with a key this %1 no longer has. Reset to start over."_s.arg(
        DesktopWords::here().device);
}

void SystemPromptStore::reset()
{
    setLoadFailed(false);
    hold({});
    static_cast<void>(save());
}

// Empty for a missing file; nothing for one that can't be opened.
std::optional<QString> SystemPromptStore::stored() const
{
    try {
        const auto contents = PrivateFile::read(m_filePath, largestFile);
        if (!contents)
            return QString();
        const auto plain = m_vault.open(*contents);
        return plain ? Text::fromUtf8(*plain) : std::nullopt;
    } catch (const FileError &) {
        return std::nullopt;
    }
}

bool SystemPromptStore::save() const
{
    if (m_loadFailed) {
        logWriteFailure("it holds instructions that can't be opened");
        return false;
    }
    try {
        m_vault.writeSealed(m_prompt.toUtf8(), m_filePath);
        return true;
    } catch (const std::exception &error) {
        logWriteFailure(error.what());
        return false;
    }
}

// Once: the settings let go of them as soon as the file has them. A file with instructions is newer than
// theirs.
void SystemPromptStore::takeOverFormerInstructions()
{
    const auto persona = m_settings.legacyPersona();
    if (!persona || m_loadFailed)
        return;
    const QString instructions = folded(*persona);
    if (m_prompt.isEmpty() && !instructions.isEmpty()) {
        hold(instructions);
        if (!save())
            return;
        Log::info(Log::Category::App,
                  "Instructions: moved the custom prompt out of defaults into the sealed file"_L1);
    }
    m_settings.forgetLegacyPersona();
}

void SystemPromptStore::hold(const QString &prompt)
{
    if (prompt == m_prompt)
        return;
    m_prompt = prompt;
    Q_EMIT promptChanged();
}

void SystemPromptStore::setLoadFailed(bool failed)
{
    if (failed == m_loadFailed)
        return;
    m_loadFailed = failed;
    Q_EMIT loadFailedChanged();
}

} // namespace morvane
