#include "services/BugReportService.h"

#include "persistence/SettingsRepository.h"
#include "utils/text/Product.h"

#include <QRegularExpression>

#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// By their keys in the repository. What isn't here is left out, whatever is added to the settings one day.
constexpr std::array told{"onboardingComplete"_L1,
                          "showMenuBarIcon"_L1,
                          "reduceAnimation"_L1,
                          "appearance"_L1,
                          "galleryBackdrop"_L1,
                          "chatShortcut"_L1,
                          "pushToTalkShortcut"_L1,
                          "hostedChatEnabled"_L1,
                          "privateCloudThinksLonger"_L1,
                          "chatTextSize"_L1,
                          "chatHistoryOpen"_L1,
                          "aiTemperature"_L1,
                          "aiMaxOutputTokens"_L1,
                          "voiceOutputEnabled"_L1,
                          "speakingRate"_L1,
                          "autoSendTranscription"_L1,
                          "speakCodeBlocks"_L1,
                          "abilitiesEnabled"_L1,
                          "memoryEnabled"_L1,
                          "webAccessEnabled"_L1,
                          "screenAwarenessEnabled"_L1,
                          "desktopActionsEnabled"_L1,
                          "appLockEnabled"_L1,
                          "appLockIdleMinutes"_L1,
                          "maxContextMessages"_L1,
                          "maxExtractedCharacters"_L1,
                          "conversationRetention"_L1,
                          "autoSummarizeDroppedFiles"_L1};

// What one of these settings may hold; a text only when it is a single word, as the raw texts of choices are.
struct Printed {
    QString operator()(bool value) const { return value ? u"on"_s : u"off"_s; }
    QString operator()(std::int64_t value) const { return QString::number(value); }
    QString operator()(double value) const { return QString::number(value); }
    QString operator()(const QString &value) const
    {
        static const QRegularExpression word(u"^[A-Za-z0-9]{1,24}$"_s);
        return word.match(value).hasMatch() ? value : u"(left out)"_s;
    }
    QString operator()(const auto &) const { return u"(left out)"_s; }
};

QString lines(const BugReportService::Facts &facts)
{
    QString text;
    for (const auto &[what, value] : facts)
        text += what + u": "_s + value.section(u'\n', 0, 0).left(200) + u'\n';
    return text;
}

} // namespace

BugReportService::BugReportService(const SettingsRepository &defaults)
    : m_defaults(defaults)
{}

QString BugReportService::text(const Facts &program, const Facts &desktop, const QStringList &logLines) const
{
    QString settings;
    for (const QLatin1StringView key : told) {
        if (const auto value = m_defaults.value(key))
            settings += key + u": "_s + std::visit(Printed(), *value) + u'\n';
    }
    return u"A report of a problem with %1\n\nWhat happened, and what you expected instead:\n\n\n"_s.arg(
               Product::name) +
           u"The program\n\n"_s + lines(program) + u"\nThe desktop\n\n"_s + lines(desktop) +
           u"\nSettings that were changed; addresses, names and texts are left out\n\n"_s +
           (settings.isEmpty() ? u"none\n"_s : settings) +
           u"\nThe last lines of the log: seconds of this run, and no word of a chat\n\n"_s +
           (logLines.isEmpty() ? u"none"_s : logLines.join(u'\n')) + u'\n';
}

} // namespace morvane
