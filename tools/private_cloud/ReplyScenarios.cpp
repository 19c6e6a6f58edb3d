// Servers that prove themselves well, and what comes then.

#include "CloudScenarios.h"

#include "ai/private_cloud/ToolBlock.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

Work practice(SealedTurn &turn)
{
    QString text = CloudScenarios::practiceText(turn);
    co_await turn.begin();
    co_await turn.words(std::move(text));
    co_await turn.end();
}

Work refuseFirst(SealedTurn &turn, int times)
{
    if (turn.state().count(turn.model() + u" turn"_s) > times) {
        co_await practice(turn);
        co_return;
    }
    turn.state().replaceKeyOf(turn.model());
    co_await CloudScenarios::refuse(turn.exchange(), 503, u"The server is starting again."_s);
}

Work unavailableOnce(SealedTurn &turn)
{
    co_await refuseFirst(turn, 1);
}

Work unavailableTwice(SealedTurn &turn)
{
    co_await refuseFirst(turn, 2);
}

Work timedOut(SealedTurn &turn)
{
    co_await CloudScenarios::refuse(turn.exchange(), 504, u"The model took too long."_s);
}

Work plainAmongSealed(SealedTurn &turn)
{
    QString text = CloudScenarios::practiceText(turn);
    co_await turn.begin();
    co_await turn.text(u"Sealed. "_s);
    co_await turn.content(u"UNSEALED PIECE "_s);
    co_await turn.words(std::move(text));
    co_await turn.end();
}

Work onlyPlain(SealedTurn &turn)
{
    co_await turn.begin();
    for (int i = 0; i < 3; ++i)
        co_await turn.content(u"UNSEALED PIECE "_s);
    co_await turn.end();
}

// Well-formed, sealed to the right key, with one bit of the tag turned.
Work undecryptable(SealedTurn &turn)
{
    QString sealed = turn.seal(u"nobody reads this"_s);
    sealed.back() = sealed.back() == u'0' ? u'1' : u'0';
    co_await turn.begin();
    co_await turn.text(u"Before it. "_s);
    co_await turn.content(std::move(sealed));
    co_await turn.text(u"Behind it."_s);
    co_await turn.end();
}

Work reasons(SealedTurn &turn)
{
    QString text = CloudScenarios::practiceText(turn);
    co_await turn.begin();
    for (const QLatin1StringView field : {"reasoning_content"_L1, "reasoning"_L1}) {
        QJsonObject thought{{field, turn.seal(u"PRIVATE THOUGHT"_s)}};
        co_await turn.delta(std::move(thought));
    }
    co_await turn.words(std::move(text));
    co_await turn.end();
}

Work thinksAloud(SealedTurn &turn, QString opening)
{
    QString text = CloudScenarios::practiceText(turn);
    co_await turn.begin();
    co_await turn.text(opening + u"PRIVATE THOUGHT "_s);
    co_await turn.text(u"and more </th"_s);
    co_await turn.text(u"ink>\n"_s);
    co_await turn.words(std::move(text));
    co_await turn.end();
}

Work thinksTagged(SealedTurn &turn)
{
    co_await thinksAloud(turn, u"\n<think>"_s);
}

Work thinksUntagged(SealedTurn &turn)
{
    co_await thinksAloud(turn, QString());
}

// The block with which a model calls the first ability that it is offered, with what the person said.
QString toolBlock(const SealedTurn &turn)
{
    const QJsonObject call{{u"name"_s, turn.firstAbility()},
                           {u"arguments"_s, QJsonObject{{u"query"_s, turn.lastPersonText()}}}};
    const QJsonObject block{{u"calls"_s, QJsonArray{call}}};
    const QString json = QString::fromUtf8(QJsonDocument(block).toJson(QJsonDocument::Compact));
    return u"%1\n%2\n%3"_s.arg(ToolBlock::opening, json, ToolBlock::closing);
}

// The round after: what the ability gave back comes again as words. Without abilities the model says so.
Work answerFromResults(SealedTurn &turn)
{
    QString text = u"The practice cloud was offered no ability."_s;
    if (const QStringList results = turn.abilityResults(); !results.isEmpty())
        text = u"The practice cloud was told: “%1”."_s.arg(results.last());
    co_await turn.begin();
    co_await turn.words(std::move(text));
    co_await turn.end();
}

Work callAbility(SealedTurn &turn, QStringList pieces)
{
    if (turn.firstAbility().isEmpty() || !turn.abilityResults().isEmpty()) {
        co_await answerFromResults(turn);
        co_return;
    }
    co_await turn.begin();
    for (const QString &piece : pieces)
        co_await turn.text(piece);
    co_await turn.end();
}

Work tools(SealedTurn &turn)
{
    const QString block = toolBlock(turn);
    co_await callAbility(turn, QStringList(block));
}

Work toolsInCharacters(SealedTurn &turn)
{
    QStringList pieces{u"One moment. "_s};
    const QString block = toolBlock(turn);
    for (qsizetype at = 0; at < block.size();) {
        const qsizetype size = block.at(at).isHighSurrogate() ? 2 : 1;
        pieces.append(block.sliced(at, size));
        at += size;
    }
    co_await callAbility(turn, std::move(pieces));
}

Work toolsFenced(SealedTurn &turn)
{
    QString block = toolBlock(turn);
    block.replace("\n{"_L1, "\n```json\n{"_L1).replace("}\n<"_L1, "}\n```\n<"_L1);
    co_await callAbility(turn, QStringList(block));
}

Work toolsBroken(SealedTurn &turn)
{
    const QString block = u"One moment. %1{\"calls\": [{\"name\""_s.arg(ToolBlock::opening);
    co_await callAbility(turn, QStringList(block));
}

Work empty(SealedTurn &turn)
{
    co_await turn.begin();
    co_await turn.end();
}

Work truncated(SealedTurn &turn)
{
    co_await turn.begin();
    co_await turn.words(u"The practice cloud has no room for "_s);
    co_await turn.end(u"length"_s);
}

Work held(SealedTurn &turn)
{
    QString text = CloudScenarios::practiceText(turn);
    co_await turn.begin();
    QJsonObject thought{{u"reasoning_content"_s, turn.seal(u"PRIVATE THOUGHT"_s)}}; // so nothing is held back
    co_await turn.delta(std::move(thought));
    co_await turn.words(u"The practice cloud begins, and waits until it is told to go on. "_s);
    co_await turn.exchange().hold(turn.state().holdPoint());
    co_await turn.words(std::move(text));
    co_await turn.end();
}

Work cut(SealedTurn &turn)
{
    co_await turn.begin();
    co_await turn.words(u"The practice cloud breaks off in the middle of "_s);
    turn.exchange().cut();
}

Work strangeLines(SealedTurn &turn)
{
    QString text = CloudScenarios::practiceText(turn);
    co_await turn.begin();
    for (const char *line : {": comment", "event: ping", "data: {", "data: []", "data: {\"choices\": []}"})
        co_await turn.line(line);
    co_await turn.words(std::move(text));
    co_await turn.end();
}

Work thousand(SealedTurn &turn)
{
    co_await turn.begin();
    for (int i = 1; i <= 1000; ++i) {
        QString number = QString::number(i) + u' ';
        co_await turn.text(std::move(number));
    }
    co_await turn.end();
}

} // namespace

std::span<const CloudScenario> CloudScenarios::replies()
{
    static constexpr CloudScenario all[]{
        {"e2ee-glm-5-3-flash"_L1, "the practice reply; a build accepts this model without any list"_L1,
         nullptr, practice},
        {"e2ee-practice"_L1, "the practice reply, which quotes what the person said last"_L1, nullptr,
         practice},
        {"e2ee-503-once"_L1, "HTTP 503 and a new key, then the practice reply"_L1, nullptr, unavailableOnce},
        {"e2ee-503-twice"_L1, "HTTP 503 and a new key, twice"_L1, nullptr, unavailableTwice},
        {"e2ee-504"_L1, "HTTP 504"_L1, nullptr, timedOut},
        {"e2ee-plain-chunk"_L1, "one plain piece among sealed ones"_L1, nullptr, plainAmongSealed},
        {"e2ee-only-plain"_L1, "plain pieces and nothing sealed"_L1, nullptr, onlyPlain},
        {"e2ee-undecryptable"_L1, "a piece that doesn't open among good ones"_L1, nullptr, undecryptable},
        {"e2ee-reasoning"_L1, "reasoning in both fields, then the practice reply"_L1, nullptr, reasons},
        {"e2ee-thinking"_L1, "thinking between tags in the text, then the practice reply"_L1, nullptr,
         thinksTagged},
        {"e2ee-thinking-untagged"_L1, "the same without the opening tag"_L1, nullptr, thinksUntagged},
        {"e2ee-tools"_L1, "calls the first ability on offer; with its result, quotes that"_L1, nullptr,
         tools},
        {"e2ee-tools-characters"_L1, "the same behind a few words, the block cut at every character"_L1,
         nullptr, toolsInCharacters},
        {"e2ee-tools-fenced"_L1, "the same with the block in a code fence"_L1, nullptr, toolsFenced},
        {"e2ee-tools-broken"_L1, "a few words and a block that breaks off"_L1, nullptr, toolsBroken},
        {"e2ee-empty"_L1, "a stream without a piece"_L1, nullptr, empty},
        {"e2ee-truncated"_L1, "stops at its limit"_L1, nullptr, truncated},
        {"e2ee-held"_L1, "a few words, and the rest once POST /go-on has come"_L1, nullptr, held},
        {"e2ee-cut"_L1, "breaks off in the middle of the stream"_L1, nullptr, cut},
        {"e2ee-strange-lines"_L1, "lines that mean nothing ahead of the practice reply"_L1, nullptr,
         strangeLines},
        {"e2ee-thousand"_L1, "the numbers to 1,000, each a piece"_L1, nullptr, thousand},
    };
    return all;
}

} // namespace morvane
