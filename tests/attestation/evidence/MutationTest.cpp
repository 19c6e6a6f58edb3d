#include "evidence/TestAuthority.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace morvane {

// Each row bends one thing of a good proof, and names the one failure that must come of it. Where a row bends
// two, it shows which of their failures comes first.

using namespace Qt::StringLiterals;

namespace {

using S = Scenario;
using DER = std::vector<QByteArray>;
using Edit = std::function<void(S &)>;

struct Row {
    const char *name;
    Edit edit;
    std::string verdict;
};

std::string verdictOf(const Edit &edit)
{
    Scenario scenario;
    edit(scenario);
    return scenario.verdict().toStdString();
}

Edit both(Edit first, Edit second)
{
    return [=](S &s) {
        first(s);
        second(s);
    };
}

// A hook that does what it did, then `change`.
template <typename Piece, typename Change>
void also(std::function<void(Piece &)> &hook, Change change)
{
    hook = [before = std::move(hook), change](Piece &piece) {
        before(piece);
        change(piece);
    };
}

const QJsonValue absent(QJsonValue::Undefined);

auto member(const char *key, const QJsonValue &value)
{
    return [=](QJsonObject &object) { object.insert(QLatin1StringView(key), value); };
}

Edit document(const char *key, const QJsonValue &value)
{
    return [=](S &s) { also(s.onDocument, member(key, value)); };
}

Edit info(const char *key, const QJsonValue &value)
{
    return [=](S &s) { also(s.onInfo, member(key, value)); };
}

Edit quoteInBase64(const QJsonValue &hex)
{
    const QString base64 = QString::fromLatin1(Scenario().quoteBytes().toBase64());
    return both(document("quote_b64", base64), document("intel_quote", hex));
}

Edit keyUnderItsOtherName(const QJsonValue &underTheFirst)
{
    const QString hex = QString::fromLatin1(KnownKey::publicKey().toHex());
    return both(document("signing_public_key", hex), document("signing_key", underTheFirst));
}

Edit payload(const char *key, const QJsonValue &value)
{
    return [=](S &s) { also(s.onPayload, member(key, value)); };
}

Edit device(std::size_t index, const char *key, const QJsonValue &value)
{
    return [=](S &s) { also(s.gpus[index].onEntry, member(key, value)); };
}

void flip(QByteArray &bytes, qsizetype at)
{
    bytes[at] = static_cast<char>(bytes[at] ^ 0x10);
}

Edit quoteByte(qsizetype at)
{
    return [=](S &s) { also(s.quote.onQuote, [=](QByteArray &quote) { flip(quote, at); }); };
}

Edit enclaveByte(qsizetype at)
{
    return [=](S &s) { s.quote.onQEReport = [=](QByteArray &report) { flip(report, at); }; };
}

Edit deviceByte(std::size_t index, qsizetype at)
{
    return [=](S &s) { s.gpus[index].onReport = [=](QByteArray &report) { flip(report, at); }; };
}

// A byte of the trust domain's report, before it is signed.
Edit measured(QByteArray TDXQuote::TDReport::*field, qsizetype at)
{
    return [=](S &s) { also(s.onReport, [=](auto &report) { flip(report.*field, at); }); };
}

Edit chain(std::function<void(DER &)> change)
{
    return [=](S &s) { also(s.quote.onChain, change); };
}

Edit host(const QString &label)
{
    return [=](S &s) { s.configurationText.replace(u"host-7"_s, label); };
}

Edit accepted(std::function<void(VeniceMeasurementAllowlist::Stack &)> change)
{
    return [=](S &s) { s.onAcceptedStack = change; };
}

Edit event(std::size_t index, const VeniceBootEvent &event)
{
    return [=](S &s) { s.stack.bootEvents[index] = event; };
}

// The leaf certificate speaks for a key that didn't sign the quoting enclave's report.
Edit leafKey(SigningKey::Curve curve)
{
    return [=](S &s) {
        CertificateRecipe leaf = s.quote.chain[0];
        leaf.key = SigningKey(curve);
        s.quote.onChain = [leaf](DER &chain) { chain[0] = leaf.mint(); };
    };
}

// A root that nobody pinned here.
void endInStrangeRoot(DER &chain)
{
    static const SigningKey key(SigningKey::Curve::P256);
    static const QByteArray root = CertificateRecipe{u"Strange Root"_s, key, u"Strange Root"_s, key}.mint();
    chain.back() = root;
}

std::string unexpectedRoot()
{
    DER chain(1);
    endInStrangeRoot(chain);
    const auto digest = QCryptographicHash::hash(chain[0], QCryptographicHash::Sha256).toHex();
    return "the chain ends at an unexpected root (" + digest.first(16).toStdString() + ")";
}

// A failure inside another, with one text in it.
std::string text(const std::string &before, const std::string &words)
{
    return before + "\"" + words + "\"))";
}

Edit leaf(std::function<void(CertificateRecipe &)> change)
{
    return [=](S &s) { change(s.quote.chain[0]); };
}

// All but the bent certificate is as the first device's good chain has it.
Edit ofSecondDevice(std::size_t index, std::function<void(CertificateRecipe &)> change)
{
    return [=](S &s) { change(s.gpus[1].chain[index]); };
}

using Report = TDXQuote::TDReport;
constexpr auto P256 = SigningKey::Curve::P256;
constexpr auto P384 = SigningKey::Curve::P384;
const QDateTime past(QDate(2026, 1, 1), QTime(0, 0), Qt::UTC);

} // namespace

TEST(MutationTest, WhatAGoodProofMayVary)
{
    const QString hex = u"0x"_s + QString::fromLatin1(Scenario().quoteBytes().toHex().toUpper());
    const auto more = [](QByteArray &data) { data += "extra"; };
    const auto untidyPEM = [](QByteArray &pem) { pem = " note\n" + pem.replace("\n", " \r\n") + '\0'; };
    const QJsonObject tcbInfo{{u"app_compose"_s, Scenario().configurationText}};
    const QString tcbText = QString::fromUtf8(QJsonDocument(tcbInfo).toJson());
    const Edit noGPUs = [](S &s) { s.stack.requiresGPUEvidence = false; };
    const Edit edits[] = {
        document("intel_quote", hex),
        quoteInBase64(""),
        keyUnderItsOtherName(5),
        document("signing_address", absent),
        info("tcb_info", tcbText),
        [=](S &s) { s.quote.onCertificationData = s.quote.onSignatureData = s.quote.onQuote = more; },
        [=](S &s) { s.quote.onPEM = untidyPEM; },
        [](S &s) { s.onReport = [](auto &r) { r.tdAttributes.fill('\xfe'); }; },
        accepted([](auto &t) { t.mrtd = t.mrtd.toUpper(); }),
        accepted(
            [](auto &t) { t.configurations[0].prefixSHA256 = t.configurations[0].prefixSHA256.toUpper(); }),
        [](S &s) { s.pins.intelRootSHA256 = s.pins.intelRootSHA256.toUpper(); },
        host(QString(31, u'a') + u'-'),
        both(noGPUs, document("nvidia_payload", "junk")),
        [](S &s) { s.quote.chain[0].to = s.date; },
        [](S &s) { s.quote.chain[0].from = s.date; },
    };
    for (const Edit &edit : edits)
        EXPECT_EQ(verdictOf(edit), "ok") << &edit - edits;
}

TEST(MutationTest, EachFaultHasItsFailure)
{
    const std::string expired = "certificate has expired";
    const std::string stranger = "certificate signature failure";
    const std::string unreadable = "a certificate in the chain could not be read";
    const std::string notBound = "quote(attestationKeyNotBoundToQuotingEnclave)";
    const std::string notListed = "measurementsNotAllowed(\"e2ee-test-model\")";
    const std::string missing = "configuration(configurationMissing)";
    const std::string otherHash = "configuration(configurationHashMismatch)";
    const std::string notReviewed = "configuration(configurationNotReviewed)";
    const std::string badHost = "configuration(hostLabelNotAllowed)";
    const std::string otherBoot = "configuration(bootMeasurementMismatch)";
    const std::string noQuoteSignature = "quote(quoteSignatureInvalid)";
    const std::string noEnclaveSignature = "quote(quotingEnclaveSignatureInvalid)";
    const std::string otherType = "quoteMalformed(unexpectedCertificationDataType(";
    const std::string malformedPayload = "gpuEvidence(malformedPayload)";
    const std::string pck = "quote(certificateChain(";
    const std::string gpu1 = "gpuEvidence(certificateChain(1, ";
    const std::string enclave = "quote(quotingEnclaveNotIntel(";
    const Edit otherAddress = document("signing_address", QString(40, u'a'));
    const Edit noTEE = [](S &s) { s.quote.teeType = 0x81000081; };
    const Edit keyType3 = [](S &s) { s.quote.attestationKeyType = 3; };
    const Edit pastItsBlock = [](S &s) {
        s.quote.onSignatureData = [](QByteArray &data) { data[133] = 1; };
        s.quote.onQuote = [](QByteArray &quote) { quote += QByteArray(4096, 'x'); };
    };
    const auto noEnd = [](QByteArray &pem) { pem.replace("-END", "-EN"); };
    const Edit debug = [](S &s) { also(s.onReport, [](auto &r) { r.tdAttributes[0] = '\xff'; }); };
    const auto ofStranger = [](auto &c) { c.issuerKey = SigningKey(P256); };
    const Edit junkLeaf = chain([](DER &c) { c[0] = "junk"; });
    const Edit strangeRoot = chain(endInStrangeRoot);
    const Edit moreBehindRoot = chain([](DER &c) { c.emplace_back(); });
    const Edit enclaveDebug = [](S &s) { s.quote.qeAttributes |= 2; };
    const Edit signer = [](S &s) { flip(s.quote.qeSigner, 31); };
    const auto swapEvents = [](auto &stack) { std::swap(stack.bootEvents[0], stack.bootEvents[1]); };
    const auto storedLive = [](auto &stack) { stack.bootEvents[3].payload = u"2b"_s.repeated(20); };
    const Edit noDevices = [](S &s) { s.gpus.clear(); };
    const Edit noBody = [](S &s) { s.gpus[0].body.clear(); };

    const Row rows[] = {
        // The document.
        {"quote not hex, good base64 beside it", quoteInBase64("123"), "noQuote"},
        {"no quote", document("intel_quote", absent), "noQuote"},
        {"bad base64", both(quoteInBase64(""), document("quote_b64", "QQ==!")), "noQuote"},
        {"key of 64 bytes", [](S &s) { s.signingKey.remove(0, 1); }, "malformedSigningKey"},
        {"key with another first byte", [](S &s) { s.signingKey[0] = 2; }, "malformedSigningKey"},
        {"no key", document("signing_key", absent), "noSigningKey"},
        {"empty key hides its other name", keyUnderItsOtherName(""), "noSigningKey"},
        {"address of 19 bytes", document("signing_address", QString(38, u'a')), "malformedSigningAddress"},
        {"another address", both(otherAddress, document("intel_quote", "00")),
         "statedAddressDoesNotMatchKey"},
        {"other model", [](S &s) { s.model = u"E2EE-\n"_s; },
         R"(wrongModel("e2ee-test-model", "E2EE-\u000a"))"},
        {"no nonce", document("nonce", absent), "nonceMismatch"},
        {"stale nonce", [](S &s) { flip(s.nonce, 31); }, "nonceMismatch"},
        // The quote's form.
        {"version", both([](S &s) { s.quote.version = 5; }, noTEE), "quoteMalformed(unsupportedVersion(5))"},
        {"TEE type", both(noTEE, keyType3), "quoteMalformed(unsupportedTEEType(2164260993))"},
        {"key type", keyType3, "quoteMalformed(unsupportedAttestationKeyType(3))"},
        {"certification data type", [](S &s) { s.quote.certificationDataType = 5; }, otherType + "5))"},
        {"PCK data type", [](S &s) { s.quote.pckDataType = 6; }, otherType + "6))"},
        {"past its block", pastItsBlock, text("quoteMalformed(tooShort(", "certification data")},
        {"block without an end", [=](S &s) { s.quote.onPEM = noEnd; }, "quoteMalformed(noCertificates)"},
        // What the quote binds.
        {"last byte of the address", measured(&Report::reportData, 19), "reportDataDoesNotBindKey"},
        {"no zero before the nonce", measured(&Report::reportData, 31), "reportDataDoesNotBindKey"},
        {"first byte of the nonce", measured(&Report::reportData, 32), "reportDataDoesNotBindNonce"},
        {"before hardware", both(measured(&Report::reportData, 0), debug), "reportDataDoesNotBindKey"},
        // Its signatures.
        {"debug before signature", both(debug, quoteByte(650)), "quote(debugEnclave)"},
        {"rtmr3", quoteByte(567), noQuoteSignature},
        {"last byte of s", quoteByte(699), noQuoteSignature},
        {"key off its curve", quoteByte(700), noQuoteSignature},
        {"before chain", both(leaf([](auto &c) { c.to = past; }), quoteByte(636)), noQuoteSignature},
        {"first byte of the QE report", quoteByte(770), noEnclaveSignature},
        {"leaf on another curve", leafKey(P384), noEnclaveSignature},
        {"root alone", chain([](DER &c) { c.erase(c.begin(), c.begin() + 2); }), noEnclaveSignature},
        // Its certificates.
        {"ended a second ago", [](S &s) { s.quote.chain[0].to = s.date.addSecs(-1); }, text(pck, expired)},
        {"begins in a second", [](S &s) { s.quote.chain[0].from = s.date.addSecs(1); },
         text(pck, "certificate is not yet valid")},
        {"root expired", [](S &s) { s.date = s.date.addYears(20); }, text(pck, expired)},
        {"leaf signed by a stranger", leaf(ofStranger), text(pck, stranger)},
        {"certificate cut short", chain([](DER &c) { c[1].chop(1); }), text(pck, unreadable)},
        {"byte behind a certificate", chain([](DER &c) { c[0] += '\0'; }), text(pck, unreadable)},
        {"root first", both(junkLeaf, strangeRoot), text(pck, unexpectedRoot())},
        {"behind the root", both(moreBehindRoot, strangeRoot), text(pck, unexpectedRoot())},
        // The quoting enclave.
        {"first byte of the key's digest", enclaveByte(320), notBound},
        {"last byte of the key's digest", enclaveByte(351), notBound},
        {"authentication data", quoteByte(1221), notBound},
        {"debug", both(enclaveDebug, signer), text(enclave, "the quoting enclave is in debug mode")},
        {"signer", signer, text(enclave, "the quoting enclave was signed by 5151515151515151, not by Intel")},
        {"product", [](S &s) { s.quote.qeProduct = 0x0102; },
         text(enclave, "the quoting enclave is Intel product 258, not the TDX quoting enclave")},
        // The accepted servers.
        {"image first", both(measured(&Report::mrtd, 47), document("info", absent)), notListed},
        {"rtmr0", measured(&Report::rtmr0, 0), notListed},
        {"rtmr1", measured(&Report::rtmr1, 0), notListed},
        {"rtmr2", measured(&Report::rtmr2, 0), notListed},
        {"rtmr3", measured(&Report::rtmr3, 0), otherBoot},
        {"no configuration", info("tcb_info", 1), missing},
        {"empty configuration", info("tcb_info", QJsonObject{{u"app_compose"_s, u""_s}}), missing},
        {"instance in upper case", info("instance_id", QString(40, u'B')), missing},
        {"another instance", info("instance_id", QString(40, u'b')), otherBoot},
        {"text that wasn't measured", measured(&Report::mrconfigid, 1), otherHash},
        {"register of another kind", measured(&Report::mrconfigid, 0), otherHash},
        {"byte before the host", host(u"\u00a0host-7"_s), badHost},
        {"first byte", [](S &s) { s.configurationText[0] = u'['; }, notReviewed},
        {"byte at the very end", [](S &s) { s.configurationText += u'\n'; }, notReviewed},
        {"no host", host(u""_s), notReviewed},
        {"negative suffix", [](S &s) { s.stack.configurations[0].suffixLength = -1; }, notReviewed},
        {"host of 33 bytes", host(QString(33, u'a')), badHost},
        {"hyphen in front", host(u"-a"_s), badHost},
        {"host in upper case", host(u"hostA"_s), badHost},
        {"events in another order", accepted(swapEvents), otherBoot},
        {"stored payload of a live event", accepted(storedLive), otherBoot},
        {"compose hash twice", event(0, {u"compose-hash"_s, std::nullopt}), otherBoot},
        {"no instance event", event(3, {u"other"_s, u""_s}), otherBoot},
        {"payload missing", event(1, {u"app-id"_s, std::nullopt}), otherBoot},
        {"payload not hex", event(1, {u"app-id"_s, u"0"_s}), otherBoot},
        {"event without a name", event(0, {u""_s, u""_s}), otherBoot},
        {"event name with a colon", event(0, {u"a:b"_s, u""_s}), otherBoot},
        // The graphics chips' payload.
        {"server first", both(noDevices, host(u"-"_s)), badHost},
        {"empty payload", document("nvidia_payload", ""), "gpuEvidenceMissing"},
        {"omitted, though it is there", document("gpu_evidence_omitted", true), "gpuEvidenceMissing"},
        {"no list", payload("evidence_list", absent), malformedPayload},
        {"empty list", noDevices, "gpuEvidence(noEvidence)"},
        {"nonce is read before the list", both(noDevices, payload("nonce", "abc")), malformedPayload},
        {"certificate no base64", device(0, "certificate", "é==="), malformedPayload},
        {"device without a nonce", device(0, "nonce", absent), malformedPayload},
        {"stale payload", payload("nonce", "5a"), "gpuEvidence(nonceMismatch(-1))"},
        // The graphics chips.
        {"stale device", [](S &s) { flip(s.gpus[1].nonce, 0); }, "gpuEvidence(nonceMismatch(1))"},
        {"stale report", [](S &s) { flip(s.gpus[1].reportNonce, 31); }, "gpuEvidence(nonceNotInReport(1))"},
        {"nothing between nonce and signature", noBody, "gpuEvidence(nonceNotInReport(0))"},
        {"no certificates", device(1, "certificate", ""), text(gpu1, "the certificate chain did not verify")},
        {"root before signature",
         both([](S &s) { s.gpus[1].onChain = endInStrangeRoot; }, deviceByte(1, 100)),
         text(gpu1, unexpectedRoot())},
        {"expired above", ofSecondDevice(3, [](auto &c) { c.to = past; }), text(gpu1, expired)},
        {"leaf signed by a stranger", ofSecondDevice(0, ofStranger), text(gpu1, stranger)},
        {"intermediate signed by a stranger", ofSecondDevice(2, ofStranger), text(gpu1, stranger)},
        {"report body", deviceByte(1, 40), "gpuEvidence(signatureInvalid(1))"},
        {"signature", deviceByte(1, 300), "gpuEvidence(signatureInvalid(1))"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(verdictOf(row.edit), row.verdict) << row.name;
}

// Whatever order a caller takes the devices in, the first failure in the payload's order is reported.
TEST(MutationTest, TheFirstDeviceThatFailsIsReported)
{
    Scenario scenario;
    both(deviceByte(0, 40), device(1, "nonce", "5a"))(scenario);
    auto question = scenario.question();
    std::vector<std::size_t> order;
    question.spread = [&order](std::size_t count, const NvidiaGPUEvidence::Piece &piece) {
        for (std::size_t i = count; i-- > 0; order.push_back(i))
            piece(i);
    };
    try {
        (void)VeniceAttestationVerifier::verify(question);
        ADD_FAILURE();
    } catch (const VeniceAttestationVerifier::Failure &failure) {
        EXPECT_EQ(failure.caseText(), u"gpuEvidence(signatureInvalid(0))"_s);
    }
    EXPECT_EQ(order, (std::vector<std::size_t>{1, 0}));
}

} // namespace morvane
