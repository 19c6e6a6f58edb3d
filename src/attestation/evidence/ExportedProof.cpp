#include "attestation/evidence/ExportedProof.h"

#include "attestation/evidence/CaseText.h"
#include "attestation/evidence/QuoteForm.h"
#include "attestation/evidence/VeniceAttestationVerifier.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/UniversalTime.h"

#include <QLocale>
#include <QRegularExpression>

#include <algorithm>
#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using ExportedProof::Failure;
using ExportedProof::Inquiry;
using Source = VeniceMeasurementAllowlist::Source;

constexpr qsizetype addressSize = 20;
constexpr qsizetype keyPartSize = 32;
constexpr qint64 graceSeconds = 3600; // a proof is used for half an hour after it was judged

// What a row says of a place, and what came of it there. %1 is the device, by its name on any desktop.
struct PlaceForm {
    QLatin1StringView where;
    QLatin1StringView result;
    bool hasHost;
};

constexpr QLatin1StringView enclave{"Verified enclave"};

constexpr std::array<PlaceForm, 7> placeForms{{
    {"This %1"_L1, "Stayed on this %1"_L1, false},
    {"Your network"_L1, "Stayed on your network"_L1, true},
    {enclave, "Hardware verified"_L1, false},
    {"Refused"_L1, "Nothing was sent"_L1, false},
    {"Private cloud"_L1, "Nothing was sent"_L1, false},
    {"Your own service"_L1, "Nothing was sent"_L1, true},
    {"Ollama's cloud"_L1, "Nothing was sent"_L1, false},
}};

const std::array<QStringView, 2> &devices()
{
    static const std::array<QStringView, 2> names{DesktopWords::original.device,
                                                  DesktopWords::freedesktop.device};
    return names;
}

bool saysOnAnyDesktop(const QString &text, QLatin1StringView form)
{
    return std::any_of(devices().begin(), devices().end(), [&](QStringView device) {
        return text == QString(form).replace("%1"_L1, device.toString());
    });
}

void require(bool agrees, const QString &field)
{
    if (!agrees)
        throw Failure(Failure::Contradiction{field});
}

void requireSame(const QByteArray &stated, const QByteArray &signedValue, const QString &field)
{
    if (stated != signedValue)
        throw Failure(Failure::NotTheQuotes{field});
}

const ProofExportFile::Proof &proofOf(const Inquiry &inquiry)
{
    return inquiry.turn.proof.value();
}

void requirePlace(Inquiry &inquiry)
{
    const auto &turn = inquiry.turn;
    const auto form = std::find_if(placeForms.begin(), placeForms.end(), [&](const PlaceForm &place) {
        return saysOnAnyDesktop(turn.where, place.where);
    });
    require(form != placeForms.end(), u"where"_s);
    require(turn.proof.has_value() == (form->where == enclave), u"proof"_s);
    require(turn.host.has_value() == form->hasHost, u"host"_s);
    const bool isEarlier = turn.proof && turn.result == "Hardware verified earlier"_L1;
    require(isEarlier || saysOnAnyDesktop(turn.result, form->result), u"result"_s);
    require(!turn.proof || turn.proof->verifiedThisTurn == !isEarlier, u"verifiedThisTurn"_s);
}

void requireGraphics(Inquiry &inquiry)
{
    const auto &proof = proofOf(inquiry);
    require(proof.requiresGPUEvidence == (proof.gpuCount >= 1), u"gpusVerifiedByThisMac"_s);
}

void requireListText(Inquiry &inquiry)
{
    const auto &text = proofOf(inquiry).acceptedServersList;
    if (!text)
        return;
    const auto named = ExportedProof::listNamedIn(*text);
    require(named.has_value(), u"acceptedServersList"_s);
    const QDateTime &ranAt = inquiry.turn.ranAt;
    if (const auto *list = std::get_if<Source::SignedList>(&named->value()))
        require(ranAt.addSecs(-graceSeconds).date() <= list->notAfter.date(), u"acceptedServersList"_s);
    if (const auto *list = std::get_if<Source::ExpiredList>(&named->value()))
        require(list->notAfter.date() <= ranAt.date(), u"acceptedServersList"_s);
}

void requireReadableQuote(Inquiry &inquiry)
{
    inquiry.quote = TDXQuote::parse(proofOf(inquiry).quote);
}

void requireNoStrayByte(Inquiry &inquiry)
{
    if (const auto offset = QuoteForm::firstStrayByte(proofOf(inquiry).quote, inquiry.quote))
        throw Failure(Failure::StrayByte{*offset});
}

void requireHardware(Inquiry &inquiry)
{
    TDXQuoteVerifier::verify(inquiry.quote, inquiry.pins, inquiry.turn.ranAt);
}

void requireAddress(Inquiry &inquiry)
{
    requireSame(proofOf(inquiry).signingAddress + QByteArray(keyPartSize - addressSize, '\0'),
                inquiry.quote.report.reportData.first(keyPartSize), u"signingAddressHex"_s);
}

void requireNonce(Inquiry &inquiry)
{
    requireSame(proofOf(inquiry).nonce, inquiry.quote.report.reportData.sliced(keyPartSize),
                u"clientNonceHex"_s);
}

void requireKey(Inquiry &inquiry)
{
    const auto address = VeniceAttestationVerifier::addressOf(proofOf(inquiry).modelPublicKey);
    requireSame(address.value_or(QByteArray()), proofOf(inquiry).signingAddress, u"modelPublicKeyHex"_s);
}

void requireImage(Inquiry &inquiry)
{
    requireSame(proofOf(inquiry).mrtd, inquiry.quote.report.mrtd, u"mrtdHex"_s);
}

void requireStart(Inquiry &inquiry)
{
    requireSame(proofOf(inquiry).rtmr3, inquiry.quote.report.rtmr3, u"rtmr3Hex"_s);
}

void requireConfiguration(Inquiry &inquiry)
{
    if (proofOf(inquiry).composeHash != inquiry.quote.report.composeHash())
        throw Failure(Failure::NotTheQuotes{u"composeHashHex"_s});
}

constexpr std::array<Check<Inquiry>, 1> ofRows{{
    {"where, result and proof: they fit each other"_L1, requirePlace},
}};

constexpr std::array<Check<Inquiry>, 11> ofProofs{{
    {"gpusVerifiedByThisMac, gpuEvidenceRequired: reports where they are asked for, else none"_L1,
     requireGraphics},
    {"acceptedServersList: a list that may have counted then"_L1, requireListText},
    {"intelTdxQuoteHex: a quote that can be read"_L1, requireReadableQuote},
    {"intelTdxQuoteHex: no byte that isn't signed is out of place"_L1, requireNoStrayByte},
    {"intelTdxQuoteHex: Intel's hardware stands behind it"_L1, requireHardware},
    {"signingAddressHex: in the quote"_L1, requireAddress},
    {"clientNonceHex: in the quote"_L1, requireNonce},
    {"modelPublicKeyHex: its address is the one in the quote"_L1, requireKey},
    {"mrtdHex: the quote's"_L1, requireImage},
    {"rtmr3Hex: the quote's"_L1, requireStart},
    {"composeHashHex: the quote's"_L1, requireConfiguration},
}};

struct CaseTextOf {
    QString operator()(const Failure::Contradiction &e) const
    {
        return CaseText::of("contradiction"_L1, {CaseText::quoted(e.field)});
    }
    QString operator()(const Failure::NotTheQuotes &e) const
    {
        return CaseText::of("notTheQuotes"_L1, {CaseText::quoted(e.field)});
    }
    QString operator()(const Failure::StrayByte &e) const
    {
        return CaseText::of("strayByte"_L1, {QString::number(e.offset)});
    }
    QString operator()(const Failure::NotTheLists &e) const
    {
        return CaseText::of("notTheLists"_L1, {CaseText::quoted(e.field)});
    }
};

} // namespace

QString ExportedProof::Failure::caseText() const
{
    return std::visit(CaseTextOf{}, m_case);
}

std::span<const Check<Inquiry>> ExportedProof::rowChecks()
{
    return ofRows;
}

std::span<const Check<Inquiry>> ExportedProof::proofChecks()
{
    return ofProofs;
}

bool ExportedProof::isListed(const Inquiry &inquiry, const VeniceMeasurementAllowlist &list)
{
    std::optional<QString> otherwise;
    for (const auto &stack : list.stacks(inquiry.turn.model)) {
        if (!stack.isImageOf(inquiry.quote.report))
            continue;
        if (stack.label != proofOf(inquiry).stack)
            otherwise = otherwise.value_or(u"stack"_s);
        else if (stack.requiresGPUEvidence != proofOf(inquiry).requiresGPUEvidence)
            otherwise = u"gpuEvidenceRequired"_s;
        else
            return true;
    }
    if (otherwise)
        throw Failure(Failure::NotTheLists{*otherwise});
    return false;
}

std::optional<Source> ExportedProof::listNamedIn(const QString &text)
{
    static const QRegularExpression form(
        u"^Version (\\d{1,19})(, signed by Morvane, good until | expired on )([A-Z][a-z]{2,8} \\d{1,2}, \\d{4})"_s);
    QString said = text;
    for (const QStringView device : devices())
        said.replace(u"this %1 accepts"_s.arg(device), u"this %1 accepts"_s.arg(DesktopWords::here().device));
    const auto match = form.match(said);
    const std::int64_t version = match.captured(1).toLongLong();
    const QDateTime day = UniversalTime::at(QLocale::c().toDate(match.captured(3), u"MMMM d, yyyy"_s));
    for (const Source &source : {Source(Source::Bundled{}), Source(Source::SignedList{version, day}),
                                 Source(Source::ExpiredList{version, day})}) {
        if (source.text() == said)
            return source;
    }
    return std::nullopt;
}

bool ExportedProof::isJudgedBy(const ProofExportFile::Proof &proof, std::int64_t version,
                               const QDateTime &notAfter)
{
    const auto named = proof.acceptedServersList ? listNamedIn(*proof.acceptedServersList) : std::nullopt;
    const auto *const list = named ? std::get_if<Source::SignedList>(&named->value()) : nullptr;
    if (!list || list->version != version)
        return false;
    if (list->notAfter.date() != notAfter.toUTC().date())
        throw Failure(Failure::NotTheLists{u"acceptedServersList"_s});
    return true;
}

} // namespace morvane
