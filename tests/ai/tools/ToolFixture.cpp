#include "ai/tools/ToolFixture.h"

#include <map>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

void failIf(const std::exception_ptr &error)
{
    if (error)
        std::rethrow_exception(error);
}

QCoro::Task<ApprovalAnswer> answered(ApprovalAnswer answer)
{
    co_return answer;
}

} // namespace

QCoro::Task<std::vector<WebAccessing::SearchResult>> FakeWorld::search(QString query, std::stop_token)
{
    happened.append(u"search "_s + query);
    failIf(searchError);
    co_return std::vector<SearchResult>(results);
}

QCoro::Task<WebAccessing::Page> FakeWorld::readPage(QString url, qsizetype limit, std::stop_token)
{
    happened.append(u"read %1 up to %2"_s.arg(url).arg(limit));
    if (onRead)
        onRead();
    failIf(readError);
    co_return Page(page);
}

QCoro::Task<QString> FakeWorld::openLink(QString url, std::stop_token)
{
    happened.append(u"open "_s + url);
    failIf(desktopError);
    co_return u"Opened."_s;
}

QCoro::Task<QString> FakeWorld::createEvent(EventWish wish, std::stop_token)
{
    happened.append(u"event %1 at %2 for %3"_s.arg(wish.title, wish.start.toString(Qt::ISODate))
                        .arg(wish.durationMinutes));
    failIf(desktopError);
    co_return u"Added."_s;
}

QCoro::Task<DesktopActing::ShortcutAnswer> FakeWorld::runShortcut(QString name, std::optional<QString> input,
                                                                  std::stop_token)
{
    happened.append(u"run "_s + name + u" with "_s + input.value_or(u"nothing"_s));
    failIf(desktopError);
    co_return ShortcutAnswer(shortcutAnswer);
}

QCoro::Task<QString> FakeWorld::captureText(std::stop_token)
{
    happened.append(u"look at the screen"_s);
    failIf(screenError);
    co_return QString(screenText);
}

ToolFixture::ToolFixture()
{
    settings.setScreenAwarenessEnabled(true);
    settings.setDesktopActionsEnabled(true);
    registry.setHooks(hooks());
}

ToolRegistry::Hooks ToolFixture::hooks()
{
    const auto ask = [this](const QString &mark) {
        return [this, mark](const QString &verb, const AIToolCall &, const AITool &) {
            asked.append(verb + mark);
            if (onAsked)
                onAsked();
            return answered(answer);
        };
    };
    return {.approvalHandler = ask({}),
            .chatWideApprovalHandler = ask(u"+"_s),
            .permissionAttentionHandler = [this](const UserPresentableError &) { ++attentions; },
            .onToolCompleted = [this](const AIToolCall &,
                                      const AIToolResult &result) { completed.push_back(result); }};
}

AIToolCall ToolFixture::call(const QString &name, const QString &arguments)
{
    return {u"call-1"_s, name, arguments};
}

AIToolCall ToolFixture::usual(const QString &name)
{
    static const std::map<QString, QString> arguments{
        {u"remember"_s, uR"({"fact":"They like tea."})"_s},
        {u"forget"_s, uR"({"about":"coffee"})"_s},
        {u"search_web"_s, uR"({"query":"weather"})"_s},
        {u"read_web_page"_s, uR"({"url":"https://typed.example/Page"})"_s},
        {u"look_at_screen"_s, u"{}"_s},
        {u"open_link"_s, uR"({"url":"https://open.example"})"_s},
        {u"create_calendar_event"_s, uR"({"title":"Lunch","minutes_from_now":60})"_s},
        {u"run_shortcut"_s, uR"({"name":"Tidy up"})"_s},
    };
    return call(name, arguments.at(name));
}

AIToolResult ToolFixture::dispatch(const AIToolCall &call, std::shared_ptr<TurnContext> turn,
                                   std::stop_token stop)
{
    return TestWait::await(registry.dispatch(call, std::move(turn), std::move(stop)));
}

std::shared_ptr<TurnContext> ToolFixture::turnOf(TurnContext::Attendance attendance,
                                                 const std::vector<AIMessage> &messages)
{
    return TurnContext::begin(attendance, u"chat:A"_s, TurnContext::Notes::kept,
                              u"Look at https://typed.example/Page please"_s, messages);
}

} // namespace morvane
