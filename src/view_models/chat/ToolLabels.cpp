#include "view_models/chat/ToolLabels.h"

#include "utils/text/Json.h"

#include <QRegularExpression>
#include <QUrl>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// In one line: a label is a line of its own, and a model's words must not write further ones.
QString argument(const AIToolCall &call, QLatin1StringView key)
{
    const auto arguments = Json::parseObject(call.argumentsJSON.toUtf8());
    return arguments ? Json::string(*arguments, key).value_or(QString()).simplified() : QString();
}

QString hostOf(const AIToolCall &call)
{
    const QString host = QUrl(argument(call, "url"_L1)).host();
    return host.isEmpty() ? u"a page"_s : host;
}

QString quotedName(const AIToolCall &call)
{
    const QString name = argument(call, "name"_L1);
    return u"“"_s + (name.isEmpty() ? u"a shortcut"_s : name) + u"”"_s;
}

enum class Phase { running, finished, failed };

QString label(const AIToolCall &call, Phase phase)
{
    const auto pick = [phase](const QString &running, const QString &finished, const QString &failed) {
        return phase == Phase::running ? running : phase == Phase::finished ? finished : failed;
    };
    const QString tool = call.name.simplified();
    if (tool == "search_web"_L1)
        return pick(u"Searching the web…"_s,
                    u"Searched the web for “"_s + argument(call, "query"_L1) + u"”"_s,
                    u"Couldn't search the web"_s);
    if (tool == "read_web_page"_L1)
        return pick(u"Reading "_s + hostOf(call) + u"…"_s, u"Read "_s + hostOf(call),
                    u"Couldn't read "_s + hostOf(call));
    if (tool == "look_at_screen"_L1)
        return pick(u"Looking at your screen…"_s, ToolLabels::finishedScreenReading(),
                    u"Couldn't read the screen"_s);
    if (tool == "remember"_L1)
        return pick(u"Saving a note…"_s, u"Remembered something"_s, u"Couldn't save that note"_s);
    if (tool == "forget"_L1)
        return pick(u"Forgot what you asked"_s, u"Forgot what you asked"_s, u"Couldn't forget that"_s);
    if (tool == "open_link"_L1)
        return pick(u"Opening a link…"_s, u"Opened a link"_s, u"Didn't open the link"_s);
    if (tool == "create_calendar_event"_L1)
        return pick(u"Adding a calendar event…"_s, u"Added a calendar event"_s, u"Didn't add the event"_s);
    if (tool == "run_shortcut"_L1)
        return pick(u"Running "_s + quotedName(call) + u"…"_s, u"Ran "_s + quotedName(call),
                    u"Didn't run "_s + quotedName(call));
    return pick(u"Using "_s + tool + u"…"_s, u"Used "_s + tool, u"Used "_s + tool);
}

void addHost(QStringList &domains, const QString &url)
{
    const QString host = QUrl(url).host();
    if (!host.isEmpty() && !domains.contains(host))
        domains.append(host);
}

} // namespace

QString ToolLabels::running(const AIToolCall &call)
{
    return label(call, Phase::running);
}

QString ToolLabels::finished(const AIToolCall &call)
{
    return label(call, Phase::finished);
}

QString ToolLabels::failed(const AIToolCall &call)
{
    return label(call, Phase::failed);
}

QString ToolLabels::rejected()
{
    return u"Answered without abilities: the server takes no tools. Turn them on there, or choose another "
           "model in Settings → AI."_s;
}

bool ToolLabels::isScreenReading(const AIToolCall &call)
{
    return call.name == "look_at_screen"_L1;
}

QString ToolLabels::finishedScreenReading()
{
    return u"Looked at your screen"_s;
}

QString ToolLabels::pageHost(const AIToolCall &call)
{
    return call.name == "read_web_page"_L1 ? QUrl(argument(call, "url"_L1)).host() : QString();
}

QStringList ToolLabels::sourceDomains(const AIToolCall &call, const AIToolResult &result)
{
    if (call.name != "search_web"_L1 && call.name != "read_web_page"_L1)
        return {};
    static const QRegularExpression address(uR"(https?://[^\s<>"'\)\]]+)"_s,
                                            QRegularExpression::CaseInsensitiveOption);
    QStringList domains;
    for (auto matches = address.globalMatch(result.content); matches.hasNext();)
        addHost(domains, matches.next().captured());
    addHost(domains, argument(call, "url"_L1));
    return domains;
}

} // namespace morvane
