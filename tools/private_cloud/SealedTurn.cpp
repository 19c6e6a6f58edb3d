#include "SealedTurn.h"

#include "ai/private_cloud/VeniceE2EESession.h"
#include "utils/bytes/Hex.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Refused = SealedTurn::Refused;

// The point in a header. Keys travel in lower case.
QByteArray keyIn(const Request &request, const char *header)
{
    const QByteArray text = request.header(header).value_or(QByteArray());
    const auto key = Hex::decode(QString::fromLatin1(text));
    if (!key || !Secp256k1::isValidPublicKey(*key) || text != text.toLower())
        throw Refused(std::string(header) + " must be a point of 65 bytes in lower-case hexadecimal.");
    return *key;
}

void demand(bool holds, const char *words)
{
    if (!holds)
        throw Refused(words);
}

// The request says nothing in plain but what the server needs to know.
void checkBody(const QJsonObject &body)
{
    const QStringList expected{u"max_tokens"_s, u"messages"_s,    u"model"_s,
                               u"stream"_s,     u"temperature"_s, u"venice_parameters"_s};
    demand(body.keys() == expected, "The body must hold exactly max_tokens, messages, model, stream, "
                                    "temperature and venice_parameters.");
    demand(body["stream"_L1] == true, "Sealed replies are streamed.");
    demand(body["temperature"_L1].isDouble() && body["max_tokens"_L1].isDouble(),
           "temperature and max_tokens are numbers.");
    const QJsonObject parameters{{u"include_venice_system_prompt"_s, false}};
    demand(body["venice_parameters"_L1].toObject() == parameters, "venice_parameters is unknown.");
}

QString opened(const QJsonValue &message, QLatin1StringView role, const SecretBytes &key)
{
    const QJsonObject object = message.toObject();
    demand(object.keys() == QStringList{u"content"_s, u"role"_s} && object["role"_L1].toString() == role,
           "There must be two messages, of the system and of the user.");
    const QString content = object["content"_L1].toString();
    demand(content == content.toLower(), "A message must be sealed, in lower-case hexadecimal.");
    try {
        return VeniceE2EESession::openWith(key, content);
    } catch (const VeniceE2EESession::Failure &) {
        throw Refused("A message doesn't open: it must be sealed to the key of the proof.");
    }
}

} // namespace

SealedTurn::SealedTurn(Exchange &exchange, CloudState &state)
    : m_exchange(exchange)
    , m_state(state)
{
    const Request &request = exchange.request();
    const Secp256k1::KeyPair &own = state.keyOf(model());
    demand(request.header("Content-Type") == "application/json", "The body must be application/json.");
    demand(request.header("X-Venice-TEE-Signing-Algo") == "ecdsa",
           "X-Venice-TEE-Signing-Algo must be ecdsa.");
    m_clientKey = keyIn(request, "X-Venice-TEE-Client-Pub-Key");
    demand(keyIn(request, "X-Venice-TEE-Model-Pub-Key") == own.publicKey,
           "X-Venice-TEE-Model-Pub-Key is not the key of this server.");
    checkBody(request.json);
    const QJsonArray messages = request.json["messages"_L1].toArray();
    demand(messages.size() == 2, "There must be two messages, of the system and of the user.");
    m_system = opened(messages[0], "system"_L1, own.privateKey);
    m_prompt = opened(messages[1], "user"_L1, own.privateKey);
}

QString SealedTurn::lastPersonText() const
{
    static const QRegularExpression said(
        uR"(^PERSON: (.*?)(?=\n\n(?:PERSON|YOU|YOU ASKED FOR): |\n\nABILITY RESULT |\n\n\(Note to the|\z))"_s,
        QRegularExpression::MultilineOption | QRegularExpression::DotMatchesEverythingOption);
    QString last;
    for (auto match = said.globalMatch(m_prompt); match.hasNext();)
        last = match.next().captured(1);
    return last;
}

QStringList SealedTurn::abilityResults() const
{
    static const QRegularExpression result(uR"(<<<RESULT>>>\n(.*?)\n<<<END RESULT>>>)"_s,
                                           QRegularExpression::DotMatchesEverythingOption);
    const QString sinceThen = m_prompt.mid(m_prompt.lastIndexOf("PERSON: "_L1));
    QStringList results;
    for (auto match = result.globalMatch(sinceThen); match.hasNext();)
        results.append(match.next().captured(1));
    return results;
}

QString SealedTurn::firstAbility() const
{
    static const QRegularExpression offer(uR"(^- ([A-Za-z0-9_]+): )"_s, QRegularExpression::MultilineOption);
    const qsizetype from = m_system.indexOf("ABILITIES\n"_L1);
    const qsizetype to = m_system.indexOf("HOW TO USE AN ABILITY"_L1);
    return from < 0 || to < from ? QString() : offer.match(m_system.sliced(from, to - from)).captured(1);
}

QString SealedTurn::seal(const QString &text) const
{
    return VeniceE2EESession::sealTo(m_clientKey, text);
}

Work SealedTurn::begin()
{
    co_await m_exchange.beginStream(200, "text/event-stream");
}

Work SealedTurn::text(QString text)
{
    QString sealed = seal(text);
    co_await content(std::move(sealed));
}

Work SealedTurn::words(QString text)
{
    for (qsizetype start = 0; start < text.size();) {
        const qsizetype blank = text.indexOf(u' ', start);
        const qsizetype end = blank < 0 ? text.size() : blank + 1;
        QString word = text.sliced(start, end - start);
        co_await this->text(std::move(word));
        start = end;
    }
}

Work SealedTurn::content(QString unsealed)
{
    QJsonObject fields{{u"content"_s, unsealed}};
    co_await delta(std::move(fields));
}

Work SealedTurn::delta(QJsonObject delta)
{
    const QJsonObject choice{{u"index"_s, 0}, {u"delta"_s, delta}, {u"finish_reason"_s, QJsonValue()}};
    const QJsonObject chunk{
        {u"object"_s, u"chat.completion.chunk"_s}, {u"model"_s, model()}, {u"choices"_s, QJsonArray{choice}}};
    QByteArray bytes = "data: " + QJsonDocument(chunk).toJson(QJsonDocument::Compact);
    co_await line(std::move(bytes));
}

Work SealedTurn::line(QByteArray line)
{
    QByteArray bytes = line + "\n\n";
    co_await m_exchange.chunk(std::move(bytes));
}

Work SealedTurn::end(QString reason)
{
    const QJsonObject choice{{u"index"_s, 0}, {u"delta"_s, QJsonObject()}, {u"finish_reason"_s, reason}};
    const QJsonObject chunk{
        {u"object"_s, u"chat.completion.chunk"_s}, {u"model"_s, model()}, {u"choices"_s, QJsonArray{choice}}};
    QByteArray last = "data: " + QJsonDocument(chunk).toJson(QJsonDocument::Compact);
    co_await line(std::move(last));
    co_await line("data: [DONE]");
    co_await m_exchange.endStream();
}

} // namespace morvane
