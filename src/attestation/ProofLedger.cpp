#include "attestation/ProofLedger.h"

#include "attestation/ProofExport.h"
#include "utils/text/DesktopWords.h"

#include <QLocale>

#include <algorithm>
#include <array>
#include <chrono>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Kind = ProofLedger::Place::Kind;
using namespace std::chrono_literals;

// A proof this much older than the request that relies on it was made for an earlier one.
constexpr std::chrono::milliseconds ownProofAge = 2s;

struct PlaceWords {
    Kind kind;
    QLatin1StringView code;
    QLatin1StringView name; // %1 is the device

    [[nodiscard]] QString plainName() const
    {
        return kind == Kind::thisMac ? QString(name).arg(DesktopWords::here().device) : QString(name);
    }
};

constexpr std::array<PlaceWords, 7> placeWords{{
    {Kind::thisMac, QLatin1StringView("this-mac"), QLatin1StringView("This %1")},
    {Kind::network, QLatin1StringView("your-network"), QLatin1StringView("Your network")},
    {Kind::verifiedEnclave, QLatin1StringView("verified-enclave"), QLatin1StringView("Verified enclave")},
    {Kind::enclaveRefused, QLatin1StringView("enclave-refused"), QLatin1StringView("Refused")},
    {Kind::morvaneCloud, QLatin1StringView("morvane-cloud"), QLatin1StringView("Private cloud")},
    {Kind::yourOwnService, QLatin1StringView("your-own-service"), QLatin1StringView("Your own service")},
    {Kind::ollamaCloud, QLatin1StringView("ollama-cloud"), QLatin1StringView("Ollama's cloud")},
}};

const PlaceWords &wordsOf(Kind kind)
{
    return placeWords[static_cast<std::size_t>(kind)];
}

} // namespace

QString ProofLedger::Place::code() const
{
    return wordsOf(kind).code;
}

QString ProofLedger::Place::plainName() const
{
    return wordsOf(kind).plainName();
}

ProofLedger::Attestation ProofLedger::Attestation::of(const VeniceAttestationVerifier::Verified &verified)
{
    return {.stackLabel = verified.stack.label,
            .teeProvider = verified.teeProvider,
            .quote = verified.quote,
            .nonce = verified.nonce,
            .mrtd = verified.mrtd,
            .rtmr3 = verified.rtmr3,
            .composeHash = verified.composeHash,
            .signingAddress = verified.signingAddress,
            .modelPublicKey = verified.modelPublicKey,
            .verifiedGPUCount = static_cast<int>(verified.verifiedGPUCount),
            .requiresGPUEvidence = verified.stack.requiresGPUEvidence,
            .serverClaimedVerified = verified.serverClaimedVerified,
            .verifiedAt = verified.verifiedAt};
}

QString ProofLedger::Attestation::summary() const
{
    const QString chips = verifiedGPUCount >= 1 ? u"%1 graphics chips"_s.arg(verifiedGPUCount)
                          : requiresGPUEvidence ? u"no graphics chip proof"_s
                                                : u"graphics chips not checked"_s;
    return u"Hardware and base system · "_s + chips;
}

bool ProofLedger::Entry::wasVerifiedEarlier() const
{
    return attestation && attestation->verifiedAt.msecsTo(startedAt) > ownProofAge.count();
}

QString ProofLedger::Entry::resultText() const
{
    if (attestation)
        return wasVerifiedEarlier() ? u"Hardware verified earlier"_s : u"Hardware verified"_s;
    switch (place.kind) {
    case Kind::thisMac:
        return u"Stayed on this %1"_s.arg(DesktopWords::here().device);
    case Kind::network:
        return u"Stayed on your network"_s;
    case Kind::verifiedEnclave:
    case Kind::enclaveRefused:
    case Kind::morvaneCloud:
    case Kind::yourOwnService:
    case Kind::ollamaCloud:
        break;
    }
    return u"Nothing was sent"_s;
}

QUuid ProofLedger::append(Entry entry)
{
    if (entry.id.isNull())
        entry.id = QUuid::createUuid();
    return m_rows.append(std::move(entry));
}

QByteArray ProofLedger::exportData(const QDateTime &exported, const QString &guidePage) const
{
    return ProofExport::json(snapshot().entries, exported, guidePage);
}

QString ProofLedger::exportFileName(const QDateTime &moment)
{
    return u"morvane-"_s + QLocale::c().toString(moment, u"yyyy-MM-dd-HHmm"_s) + u".json"_s;
}

std::optional<QString> placeNameOfCode(const QString &code)
{
    for (const PlaceWords &words : placeWords) {
        if (code == words.code)
            return words.plainName();
    }
    return std::nullopt;
}

} // namespace morvane
