#include "evidence/TestAuthority.h"
#include "support/TestData.h"
#include "utils/text/UniversalTime.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace morvane {

// Each row bends one thing of a good proof; the one failure that must come of it stands below its name in
// tests/data/attestation/mutations.txt. Where a row bends two, it shows which of their failures comes first.

using namespace Qt::StringLiterals;

namespace {

using S = Scenario;
using DER = std::vector<QByteArray>;
using Edit = std::function<void(S &)>;

QString verdictOf(const Edit &edit)
{
    Scenario scenario;
    edit(scenario);
    return scenario.verdict();
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
QByteArray rootOfNobody()
{
    static const SigningKey key(SigningKey::Curve::P256);
    static const QByteArray root = CertificateRecipe{u"Strange Root"_s, key, u"Strange Root"_s, key}.mint();
    return root;
}

void endInStrangeRoot(DER &chain)
{
    chain.back() = rootOfNobody();
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
const QDateTime past = UniversalTime::at(QDate(2026, 1, 1));

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
        EXPECT_EQ(verdictOf(edit), u"ok"_s) << &edit - edits;
}

TEST(MutationTest, EachFaultHasItsFailure)
{
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

    const std::pair<const char *, Edit> rows[] = {
        // The document.
        {"quote not hex, good base64 beside it", quoteInBase64("123")},
        {"no quote", document("intel_quote", absent)},
        {"bad base64", both(quoteInBase64(""), document("quote_b64", "QQ==!"))},
        {"key of 64 bytes", [](S &s) { s.signingKey.remove(0, 1); }},
        {"key with another first byte", [](S &s) { s.signingKey[0] = 2; }},
        {"no key", document("signing_key", absent)},
        {"empty key hides its other name", keyUnderItsOtherName("")},
        {"address of 19 bytes", document("signing_address", QString(38, u'a'))},
        {"another address", both(otherAddress, document("intel_quote", "00"))},
        {"other model", [](S &s) { s.model = u"E2EE-\n"_s; }},
        {"no nonce", document("nonce", absent)},
        {"stale nonce", [](S &s) { flip(s.nonce, 31); }},
        // The quote's form.
        {"version", both([](S &s) { s.quote.version = 5; }, noTEE)},
        {"TEE type", both(noTEE, keyType3)},
        {"key type", keyType3},
        {"certification data type", [](S &s) { s.quote.certificationDataType = 5; }},
        {"PCK data type", [](S &s) { s.quote.pckDataType = 6; }},
        {"past its block", pastItsBlock},
        {"block without an end", [=](S &s) { s.quote.onPEM = noEnd; }},
        // What the quote binds.
        {"last byte of the address", measured(&Report::reportData, 19)},
        {"no zero before the nonce", measured(&Report::reportData, 31)},
        {"first byte of the nonce", measured(&Report::reportData, 32)},
        {"before hardware", both(measured(&Report::reportData, 0), debug)},
        // Its signatures.
        {"debug before signature", both(debug, quoteByte(650))},
        {"rtmr3", quoteByte(567)},
        {"last byte of s", quoteByte(699)},
        {"key off its curve", quoteByte(700)},
        {"before chain", both(leaf([](auto &c) { c.to = past; }), quoteByte(636))},
        {"first byte of the QE report", quoteByte(770)},
        {"leaf on another curve", leafKey(P384)},
        {"root alone", chain([](DER &c) { c.erase(c.begin(), c.begin() + 2); })},
        // Its certificates.
        {"ended a second ago", [](S &s) { s.quote.chain[0].to = s.date.addSecs(-1); }},
        {"begins in a second", [](S &s) { s.quote.chain[0].from = s.date.addSecs(1); }},
        {"root expired", [](S &s) { s.date = s.date.addYears(20); }},
        {"leaf signed by a stranger", leaf(ofStranger)},
        {"certificate cut short", chain([](DER &c) { c[1].chop(1); })},
        {"byte behind a certificate", chain([](DER &c) { c[0] += '\0'; })},
        {"root first", both(junkLeaf, strangeRoot)},
        {"behind the root", both(moreBehindRoot, strangeRoot)},
        // The quoting enclave.
        {"first byte of the key's digest", enclaveByte(320)},
        {"last byte of the key's digest", enclaveByte(351)},
        {"authentication data", quoteByte(1221)},
        {"debug", both(enclaveDebug, signer)},
        {"signer", signer},
        {"product", [](S &s) { s.quote.qeProduct = 0x0102; }},
        // The accepted servers.
        {"image first", both(measured(&Report::mrtd, 47), document("info", absent))},
        {"rtmr0", measured(&Report::rtmr0, 0)},
        {"rtmr1", measured(&Report::rtmr1, 0)},
        {"rtmr2", measured(&Report::rtmr2, 0)},
        {"rtmr3", measured(&Report::rtmr3, 0)},
        {"no configuration", info("tcb_info", 1)},
        {"empty configuration", info("tcb_info", QJsonObject{{u"app_compose"_s, u""_s}})},
        {"instance in upper case", info("instance_id", QString(40, u'B'))},
        {"another instance", info("instance_id", QString(40, u'b'))},
        {"text that wasn't measured", measured(&Report::mrconfigid, 1)},
        {"register of another kind", measured(&Report::mrconfigid, 0)},
        {"byte before the host", host(u"\u00a0host-7"_s)},
        {"first byte", [](S &s) { s.configurationText[0] = u'['; }},
        {"byte at the very end", [](S &s) { s.configurationText += u'\n'; }},
        {"no host", host(u""_s)},
        {"negative suffix", [](S &s) { s.stack.configurations[0].suffixLength = -1; }},
        {"host of 33 bytes", host(QString(33, u'a'))},
        {"hyphen in front", host(u"-a"_s)},
        {"host in upper case", host(u"hostA"_s)},
        {"events in another order", accepted(swapEvents)},
        {"stored payload of a live event", accepted(storedLive)},
        {"compose hash twice", event(0, {u"compose-hash"_s, std::nullopt})},
        {"no instance event", event(3, {u"other"_s, u""_s})},
        {"payload missing", event(1, {u"app-id"_s, std::nullopt})},
        {"payload not hex", event(1, {u"app-id"_s, u"0"_s})},
        {"event without a name", event(0, {u""_s, u""_s})},
        {"event name with a colon", event(0, {u"a:b"_s, u""_s})},
        // The graphics chips' payload.
        {"server first", both(noDevices, host(u"-"_s))},
        {"empty payload", document("nvidia_payload", "")},
        {"omitted, though it is there", document("gpu_evidence_omitted", true)},
        {"no list", payload("evidence_list", absent)},
        {"empty list", noDevices},
        {"nonce is read before the list", both(noDevices, payload("nonce", "abc"))},
        {"certificate no base64", device(0, "certificate", "é===")},
        {"device without a nonce", device(0, "nonce", absent)},
        {"stale payload", payload("nonce", "5a")},
        // The graphics chips.
        {"stale device", [](S &s) { flip(s.gpus[1].nonce, 0); }},
        {"stale report", [](S &s) { flip(s.gpus[1].reportNonce, 31); }},
        {"nothing between nonce and signature", noBody},
        {"no certificates", device(1, "certificate", "")},
        {"root before signature",
         both([](S &s) { s.gpus[1].onChain = endInStrangeRoot; }, deviceByte(1, 100))},
        {"expired above", ofSecondDevice(3, [](auto &c) { c.to = past; })},
        {"leaf signed by a stranger", ofSecondDevice(0, ofStranger)},
        {"intermediate signed by a stranger", ofSecondDevice(2, ofStranger)},
        {"report body", deviceByte(1, 40)},
        {"signature", deviceByte(1, 300)},
    };
    QString verdicts;
    for (const auto &[name, edit] : rows)
        verdicts += QString::fromUtf8(name) + u"\n    "_s + verdictOf(edit) + u'\n';
    const QByteArray root = QCryptographicHash::hash(rootOfNobody(), QCryptographicHash::Sha256).toHex();
    verdicts.replace(QString::fromLatin1(root.first(16)), u"STRANGE"_s);
    EXPECT_EQ(verdicts.toStdString(), TestData::text("attestation/mutations.txt"));
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
