#include "utils/log/Log.h"

#include "utils/log/RecentLog.h"

#include <QLoggingCategory>

#include <algorithm>
#include <array>

namespace morvane {

namespace {

const QLoggingCategory &qtCategory(Log::Category category)
{
    static const QLoggingCategory app("ai.morvane.macos.app");
    static const QLoggingCategory aiProvider("ai.morvane.macos.ai-provider");
    static const QLoggingCategory audio("ai.morvane.macos.audio");
    static const QLoggingCategory documents("ai.morvane.macos.documents");
    static const QLoggingCategory persistence("ai.morvane.macos.persistence");
    static const QLoggingCategory windowing("ai.morvane.macos.windowing");
    static const QLoggingCategory shortcuts("ai.morvane.macos.shortcuts");
    switch (category) {
    case Log::Category::App:
        return app;
    case Log::Category::AIProvider:
        return aiProvider;
    case Log::Category::Audio:
        return audio;
    case Log::Category::Documents:
        return documents;
    case Log::Category::Persistence:
        return persistence;
    case Log::Category::Windowing:
        return windowing;
    case Log::Category::Shortcuts:
        return shortcuts;
    }
    return app;
}

struct Specifier {
    QLatin1StringView text;
    bool hidesValue;
};

constexpr std::array<Specifier, 5> specifiers{{
    {QLatin1StringView("%{public}s"), false},
    {QLatin1StringView("%s"), true},
    {QLatin1StringView("%d"), false},
    {QLatin1StringView("%ld"), false},
    {QLatin1StringView("%{bool}d"), false},
}};

} // namespace

QString Log::Argument::printed() const
{
    if (const auto *text = std::get_if<QString>(&m_value))
        return *text;
    if (const auto *flag = std::get_if<bool>(&m_value))
        return *flag ? QStringLiteral("true") : QStringLiteral("false");
    return QString::number(std::get<std::int64_t>(m_value));
}

QString Log::format(QLatin1StringView format, const std::vector<Argument> &arguments)
{
    QByteArray line; // the bytes of a format are UTF-8
    auto argument = arguments.begin();
    for (qsizetype i = 0; i < format.size();) {
        const auto rest = format.sliced(i);
        const auto *specifier = std::find_if(specifiers.begin(), specifiers.end(),
                                             [&](const Specifier &s) { return rest.startsWith(s.text); });
        if (specifier == specifiers.end() || argument == arguments.end()) {
            line.append(format.data()[i++]);
            continue;
        }
        line.append(specifier->hidesValue ? QByteArray("<private>") : argument->printed().toUtf8());
        ++argument;
        i += specifier->text.size();
    }
    return QString::fromUtf8(line);
}

void Log::info(Category category, QLatin1StringView format, const std::vector<Argument> &arguments)
{
    RecentLog::note(QLatin1StringView(qtCategory(category).categoryName()), format, arguments);
    qCInfo(qtCategory(category)).noquote() << Log::format(format, arguments);
}

void Log::error(Category category, QLatin1StringView format, const std::vector<Argument> &arguments)
{
    RecentLog::note(QLatin1StringView(qtCategory(category).categoryName()), format, arguments);
    qCCritical(qtCategory(category)).noquote() << Log::format(format, arguments);
}

} // namespace morvane
