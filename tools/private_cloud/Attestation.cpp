#include "Attestation.h"

#include "DevelopmentAuthority.h"

#include "utils/bytes/Hex.h"

namespace morvane {

using namespace Qt::StringLiterals;

std::optional<QString> Attestation::objection(const Request &request)
{
    const QString nonce = request.query(u"nonce"_s);
    const std::optional<QByteArray> bytes = Hex::decode(nonce);
    if (!bytes || bytes->size() != 32 || nonce != nonce.toLower())
        return u"The nonce must be 64 lower-case hexadecimal characters."_s;
    if (request.query(u"model"_s).isEmpty())
        return u"The model is missing."_s;
    if (request.header("Accept") != "application/json")
        return u"The proof is application/json."_s;
    return std::nullopt;
}

Scenario Attestation::server() const
{
    const QByteArray key = state.keyOf(model).publicKey;
    Scenario server = DevelopmentAuthority::server();
    server.model = model;
    server.nonce = nonce;
    server.signingKey = key;
    for (GPURecipe &gpu : server.gpus)
        gpu.nonce = gpu.reportNonce = nonce;
    server.onDocument = [key](QJsonObject &document) {
        const auto address = VeniceAttestationVerifier::addressOf(key).value_or(QByteArray());
        document["signing_address"_L1] = Hex::encode(address);
        document["tee_provider"_L1] = u"development"_s;
    };
    return server;
}

Work Attestation::send(const Scenario &server) const
{
    const QJsonObject document = server.document();
    co_await exchange.respondJson(200, document);
}

Work Attestation::prove() const
{
    const Scenario good = server();
    co_await send(good);
}

} // namespace morvane
