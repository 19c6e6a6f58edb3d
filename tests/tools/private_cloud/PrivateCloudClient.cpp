#include "PrivateCloudClient.h"

#include "ai/private_cloud/SealedPrompt.h"
#include "attestation/evidence/BundledAllowlist.h"
#include "support/Await.h"
#include "utils/bytes/Hex.h"
#include "utils/text/UniversalTime.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QDateTime today = UniversalTime::at(QDate(2026, 10, 1));
const QByteArray nonce(32, '\x77');

HttpRequest get(const QString &url)
{
    HttpRequest request;
    request.url = QUrl(url);
    request.headers = {{"Accept", "application/json"}};
    return request;
}

// What comes before the connection breaks stands in `body`, which outlives the task.
QCoro::Task<> readInto(HttpResponse &response, QByteArray &body)
{
    while (true) {
        const std::optional<QByteArray> piece = co_await response.body.next();
        if (!piece)
            break;
        body += *piece;
    }
}

QString statusOf(const PrivateCloudClient::Answer &answer)
{
    if (answer.status == 0)
        return u"cut"_s;
    const QString words = QJsonDocument::fromJson(answer.body)["error"_L1]["message"_L1].toString();
    return u"HTTP %1 %2"_s.arg(answer.status).arg(words);
}

QString pieceIn(const QJsonValue &choice, const VeniceE2EESession &session)
{
    static const QRegularExpression sealed(u"\\A[0-9a-f]{186,}\\z"_s);
    const QString content = choice["delta"_L1]["content"_L1].toString();
    QString text;
    for (const QLatin1StringView field : {"reasoning_content"_L1, "reasoning"_L1}) {
        if (choice["delta"_L1][field].isString())
            text += u'[' + QString(field) + u']';
    }
    if (const QString reason = choice["finish_reason"_L1].toString(); !reason.isEmpty())
        text += u'[' + reason + u']';
    if (!sealed.match(content).hasMatch())
        return content.isEmpty() ? text : u'[' + content + u']';
    try {
        return text + session.open(content);
    } catch (const VeniceE2EESession::Failure &) {
        return text + u"[did not open]"_s;
    }
}

} // namespace

PrivateCloudClient::PrivateCloudClient(const PrivateCloudServer &server)
    : m_baseUrl(server.baseUrl())
    , m_values(PrivateCloudServer::developmentValues())
    , m_session(m_network.session(EgressFeature::aiModel, {}))
{
    const QJsonArray stacks = m_values["acceptedServers"_L1].toArray();
    m_allowlist = BundledAllowlist::read(QJsonDocument(stacks).toJson());
}

HttpResponse PrivateCloudClient::begin(HttpRequest request)
{
    return TestWait::await(m_session->send(std::move(request), {}));
}

PrivateCloudClient::Answer PrivateCloudClient::send(HttpRequest request)
{
    Answer answer;
    try {
        HttpResponse response = begin(std::move(request));
        answer.status = response.status;
        TestWait::await(readInto(response, answer.body));
        answer.isWhole = true;
    } catch (const TransportError &) {
        // What came before stands.
    }
    return answer;
}

QString PrivateCloudClient::fetchList(std::int64_t floor)
{
    const Answer list = send(get(m_baseUrl + u"/measurements"_s));
    if (list.status != 200)
        return statusOf(list);
    const Answer signature = send(get(m_baseUrl + u"/measurements.sig"_s));
    m_listBytes = list.body;
    const QString key = m_values["listSigningKeys"_L1][0].toString();
    try {
        const auto read = VeniceSignedMeasurementList::verify(list.body, signature.body,
                                                              {QByteArray::fromBase64(key.toLatin1())},
                                                              [floor](const QByteArray &) { return floor; });
        m_allowlist = read.list.allowlistAt(today, m_allowlist);
        const QString text =
            u"version %1, %2 withdrawn"_s.arg(read.list.listVersion).arg(read.list.revoked.size());
        return read.list.notAfter > today ? text : text + u", expired"_s;
    } catch (const VeniceSignedMeasurementList::Refusal &refusal) {
        return refusal.caseText();
    }
}

QString PrivateCloudClient::prove(const QString &model)
{
    const Answer answer =
        send(get(m_baseUrl + u"/attestation?model=%1&nonce=%2"_s.arg(model, Hex::encode(nonce))));
    if (answer.status != 200)
        return statusOf(answer);
    const EvidencePins pins{.intelRootSHA256 = m_values["intelRootSHA256"_L1].toString(),
                            .quotingEnclaveSigner = m_values["quotingEnclaveSigner"_L1].toString(),
                            .nvidiaRootSHA256 = m_values["nvidiaRootSHA256"_L1].toString()};
    try {
        m_verified =
            VeniceAttestationVerifier::verify({.document = VeniceAttestationDocument::decode(answer.body),
                                               .model = model,
                                               .nonce = nonce,
                                               .allowlist = m_allowlist,
                                               .pins = pins,
                                               .date = today});
        return u"ok"_s;
    } catch (const VeniceAttestationDocument::DecodeError &error) {
        return error.caseText();
    } catch (const VeniceAttestationVerifier::Failure &failure) {
        return failure.caseText().section(u'"', 0, 0);
    }
}

HttpRequest PrivateCloudClient::request(const QString &model, const VeniceE2EESession &session,
                                        const std::vector<AIMessage> &messages,
                                        const std::vector<AITool> &tools) const
{
    const SealedPrompt folded = SealedPrompt::fold(messages, u"Be kind."_s, tools, false);
    const QJsonArray sealed{
        QJsonObject{{u"role"_s, u"system"_s}, {u"content"_s, session.seal(folded.system)}},
        QJsonObject{{u"role"_s, u"user"_s}, {u"content"_s, session.seal(folded.prompt)}}};
    const QJsonObject body{{u"model"_s, model},
                           {u"messages"_s, sealed},
                           {u"stream"_s, true},
                           {u"temperature"_s, 0.7},
                           {u"max_tokens"_s, 512},
                           {u"venice_parameters"_s, QJsonObject{{u"include_venice_system_prompt"_s, false}}}};
    HttpRequest request;
    request.method = "POST";
    request.url = QUrl(m_baseUrl + u"/chat/completions"_s);
    request.headers = {{"Content-Type", "application/json"},
                       {"X-Venice-TEE-Client-Pub-Key", session.publicKey().toHex()},
                       {"X-Venice-TEE-Model-Pub-Key", session.modelKey().toHex()},
                       {"X-Venice-TEE-Signing-Algo", "ecdsa"}};
    request.body = QJsonDocument(body).toJson(QJsonDocument::Compact);
    return request;
}

QString PrivateCloudClient::turn(const QString &model, const std::vector<AIMessage> &messages,
                                 const std::vector<AITool> &tools)
{
    const VeniceE2EESession sealed = session();
    const Answer answer = send(request(model, sealed, messages, tools));
    if (answer.status != 200)
        return statusOf(answer);
    QString text;
    for (const QByteArray &line : answer.body.split('\n')) {
        if (line.startsWith("data: "))
            text += pieceIn(QJsonDocument::fromJson(line.mid(6))["choices"_L1][0], sealed);
    }
    return answer.isWhole ? text : text + u"cut"_s;
}

} // namespace morvane
