#include "support/evidence/TestAuthority.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace morvane {

// Each row bends one thing of a good proof, and names the one failure that must come of it. Where a row bends
// two, it shows which of their failures comes first.

using namespace Qt::StringLiterals;

namespace {

struct Row {
    const char *name;
    void (*bend)(Scenario &);
    QString verdict;
};

using Document = QJsonObject &;

void expectVerdicts(std::initializer_list<Row> rows)
{
    for (const Row &row : rows) {
        Scenario scenario;
        row.bend(scenario);
        EXPECT_EQ(scenario.verdict().toStdString(), row.verdict.toStdString()) << row.name;
    }
}

void flip(QByteArray &bytes, qsizetype at)
{
    bytes[at] = static_cast<char>(bytes[at] ^ 0x10);
}

template <qsizetype at>
void flipInQuote(Scenario &s)
{
    s.quote.onQuote = [](QByteArray &quote) { flip(quote, at); };
}

template <qsizetype at>
void flipInQEReport(Scenario &s)
{
    s.quote.onQEReport = [](QByteArray &report) { flip(report, at); };
}

QByteArray hexOf(const QJsonObject &object, QLatin1StringView key)
{
    return QByteArray::fromHex(object[key].toString().toLatin1());
}

void replaceInfo(Document document, QLatin1StringView key, const QJsonValue &value)
{
    QJsonObject info = document["info"_L1].toObject();
    info[key] = value;
    document["info"_L1] = info;
}

void setHost(Scenario &s, const QString &host)
{
    s.configurationText.replace(u"host-7"_s, host);
}

// The leaf certificate speaks for a key that didn't sign the quoting enclave's report.
void replaceLeafKey(Scenario &s, SigningKey::Curve curve)
{
    s.quote.onChain = [leaf = s.quote.chain[0], curve](auto &chain) mutable {
        leaf.key = SigningKey(curve);
        chain[0] = leaf.mint();
    };
}

// A root of the right name that nobody pinned.
const QByteArray &strangeRoot()
{
    static const QByteArray root = [] {
        const SigningKey key(SigningKey::Curve::P256);
        return CertificateRecipe{u"Strange Root"_s, key, u"Strange Root"_s, key}.mint();
    }();
    return root;
}

QString strangeRootReason()
{
    const QString digest =
        QString::fromLatin1(QCryptographicHash::hash(strangeRoot(), QCryptographicHash::Sha256).toHex());
    return u"the chain ends at an unexpected root (%1)"_s.arg(digest.left(16));
}

QString chainFailure(const QString &reason)
{
    return u"quote(certificateChain(\"%1\"))"_s.arg(reason);
}

QString gpuChainFailure(int index, const QString &reason)
{
    return u"gpuEvidence(certificateChain(%1, \"%2\"))"_s.arg(index).arg(reason);
}

const QDateTime past(QDate(2026, 1, 1), QTime(0, 0), Qt::UTC);
const QDateTime future(QDate(2027, 1, 1), QTime(0, 0), Qt::UTC);
const QString malformedPayload = u"gpuEvidence(malformedPayload)"_s;
const QString notListed = u"measurementsNotAllowed(\"e2ee-test-model\")"_s;
const QString bootMismatch = u"configuration(bootMeasurementMismatch)"_s;

} // namespace

TEST(MutationTest, WhatAGoodProofMayVary)
{
    expectVerdicts({
        {"nothing", [](Scenario &) {}, u"ok"_s},
        {"upper-case hex with prefix",
         [](Scenario &s) {
             s.onDocument = [](Document d) {
                 d["intel_quote"_L1] = u"0x"_s + d["intel_quote"_L1].toString().toUpper();
             };
         },
         u"ok"_s},
        {"quote in base64",
         [](Scenario &s) {
             s.onDocument = [](Document d) {
                 d["quote_b64"_L1] = QString::fromLatin1(hexOf(d, "intel_quote"_L1).toBase64());
                 d["intel_quote"_L1] = u""_s;
             };
         },
         u"ok"_s},
        {"key under its other name",
         [](Scenario &s) {
             s.onDocument = [](Document d) {
                 d["signing_public_key"_L1] = d["signing_key"_L1];
                 d["signing_key"_L1] = 5;
             };
         },
         u"ok"_s},
        {"no stated address",
         [](Scenario &s) { s.onDocument = [](Document d) { d.remove(u"signing_address"_s); }; }, u"ok"_s},
        {"server does not call itself verified",
         [](Scenario &s) { s.onDocument = [](Document d) { d["verified"_L1] = false; }; }, u"ok"_s},
        {"tcb_info as text",
         [](Scenario &s) {
             s.onDocument = [](Document d) {
                 const auto tcb = d["info"_L1].toObject()["tcb_info"_L1].toObject();
                 replaceInfo(d, "tcb_info"_L1, QString::fromUtf8(QJsonDocument(tcb).toJson()));
             };
         },
         u"ok"_s},
        {"bytes behind every block",
         [](Scenario &s) {
             s.quote.onCertificationData = [](QByteArray &data) { data += "extra"; };
             s.quote.onSignatureData = [](QByteArray &data) { data += "extra"; };
             s.quote.onQuote = [](QByteArray &quote) { quote += QByteArray(70, '\0'); };
         },
         u"ok"_s},
        {"chain text with CR LF, blanks and a zero byte",
         [](Scenario &s) {
             s.quote.onPEM = [](QByteArray &pem) { pem = " note\n" + pem.replace("\n", " \r\n") + '\0'; };
         },
         u"ok"_s},
        {"other attributes of the trust domain",
         [](Scenario &s) { s.onReport = [](auto &r) { r.tdAttributes = QByteArray(8, '\xfe'); }; }, u"ok"_s},
        {"list in upper case",
         [](Scenario &s) {
             s.onAcceptedStack = [](auto &stack) {
                 stack.mrtd = stack.mrtd.toUpper();
                 stack.configurations[0].prefixSHA256 = stack.configurations[0].prefixSHA256.toUpper();
             };
         },
         u"ok"_s},
        {"pin in upper case", [](Scenario &s) { s.pins.intelRootSHA256 = s.pins.intelRootSHA256.toUpper(); },
         u"ok"_s},
        {"longest host label", [](Scenario &s) { setHost(s, QString(31, u'a') + u'-'); }, u"ok"_s},
        {"no GPU evidence where none is asked for",
         [](Scenario &s) {
             s.stack.requiresGPUEvidence = false;
             s.onDocument = [](Document d) { d.remove(u"nvidia_payload"_s); };
         },
         u"ok"_s},
        {"bad GPU evidence where none is asked for",
         [](Scenario &s) {
             s.stack.requiresGPUEvidence = false;
             s.onDocument = [](Document d) { d["nvidia_payload"_L1] = u"junk"_s; };
         },
         u"ok"_s},
        {"last second of a certificate", [](Scenario &s) { s.quote.chain[0].to = s.date; }, u"ok"_s},
        {"first second of a certificate", [](Scenario &s) { s.quote.chain[0].from = s.date; }, u"ok"_s},
    });
}

TEST(MutationTest, TheDocument)
{
    const auto wrongModel = [](const char *answered) {
        return u"wrongModel(\"e2ee-test-model\", \"%1\")"_s.arg(QLatin1StringView(answered));
    };
    expectVerdicts({
        {"quote not hex",
         [](Scenario &s) { s.onDocument = [](Document d) { d["intel_quote"_L1] = u"zz"_s; }; }, u"noQuote"_s},
        {"quote not hex, good base64 beside it",
         [](Scenario &s) {
             s.onDocument = [](Document d) {
                 d["quote_b64"_L1] = QString::fromLatin1(hexOf(d, "intel_quote"_L1).toBase64());
                 d["intel_quote"_L1] = u"123"_s;
             };
         },
         u"noQuote"_s},
        {"no quote", [](Scenario &s) { s.onDocument = [](Document d) { d.remove(u"intel_quote"_s); }; },
         u"noQuote"_s},
        {"bad base64",
         [](Scenario &s) {
             s.onDocument = [](Document d) {
                 d.remove(u"intel_quote"_s);
                 d["quote_b64"_L1] = u"QQ=="_s + u"!"_s;
             };
         },
         u"noQuote"_s},
        {"key of 64 bytes", [](Scenario &s) { s.signingKey = s.signingKey.mid(1); },
         u"malformedSigningKey"_s},
        {"key of 66 bytes", [](Scenario &s) { s.signingKey += '\x01'; }, u"malformedSigningKey"_s},
        {"key with another first byte", [](Scenario &s) { s.signingKey[0] = 2; }, u"malformedSigningKey"_s},
        {"key not hex", [](Scenario &s) { s.onDocument = [](Document d) { d["signing_key"_L1] = u"xy"_s; }; },
         u"malformedSigningKey"_s},
        {"no key", [](Scenario &s) { s.onDocument = [](Document d) { d.remove(u"signing_key"_s); }; },
         u"noSigningKey"_s},
        {"empty key hides its other name",
         [](Scenario &s) {
             s.onDocument = [](Document d) {
                 d["signing_public_key"_L1] = d["signing_key"_L1];
                 d["signing_key"_L1] = u""_s;
             };
         },
         u"noSigningKey"_s},
        {"address of 19 bytes",
         [](Scenario &s) { s.onDocument = [](Document d) { d["signing_address"_L1] = QString(38, u'a'); }; },
         u"malformedSigningAddress"_s},
        {"address not hex",
         [](Scenario &s) { s.onDocument = [](Document d) { d["signing_address"_L1] = u"0xg0"_s; }; },
         u"malformedSigningAddress"_s},
        {"another address",
         [](Scenario &s) { s.onDocument = [](Document d) { d["signing_address"_L1] = QString(40, u'a'); }; },
         u"statedAddressDoesNotMatchKey"_s},
        {"another address before a broken quote",
         [](Scenario &s) {
             s.onDocument = [](Document d) {
                 d["signing_address"_L1] = QString(40, u'a');
                 d["intel_quote"_L1] = u"00"_s;
             };
         },
         u"statedAddressDoesNotMatchKey"_s},
        {"another model", [](Scenario &s) { s.model = u"e2ee-other"_s; }, wrongModel("e2ee-other")},
        {"model in another case", [](Scenario &s) { s.model = u"E2EE-test-model"_s; },
         wrongModel("E2EE-test-model")},
        {"model that would forge a line", [](Scenario &s) { s.model = u"x\")\nverdict: ok"_s; },
         wrongModel("x\\\")\\u000averdict: ok")},
        {"no model", [](Scenario &s) { s.onDocument = [](Document d) { d.remove(u"model"_s); }; },
         wrongModel("")},
        {"no nonce", [](Scenario &s) { s.onDocument = [](Document d) { d.remove(u"nonce"_s); }; },
         u"nonceMismatch"_s},
        {"nonce not hex", [](Scenario &s) { s.onDocument = [](Document d) { d["nonce"_L1] = u"5"_s; }; },
         u"nonceMismatch"_s},
        {"stale nonce", [](Scenario &s) { flip(s.nonce, 31); }, u"nonceMismatch"_s},
        {"short nonce", [](Scenario &s) { s.nonce.chop(1); }, u"nonceMismatch"_s},
    });
}

TEST(MutationTest, TheQuotesForm)
{
    const auto malformed = [](const QString &error) { return u"quoteMalformed(%1)"_s.arg(error); };
    expectVerdicts({
        {"empty", [](Scenario &s) { s.onDocument = [](Document d) { d["intel_quote"_L1] = u"0x"_s; }; },
         malformed(u"tooShort(\"version\")"_s)},
        {"version", [](Scenario &s) { s.quote.version = 5; }, malformed(u"unsupportedVersion(5)"_s)},
        {"version before TEE type",
         [](Scenario &s) {
             s.quote.version = 5;
             s.quote.teeType = 0;
         },
         malformed(u"unsupportedVersion(5)"_s)},
        {"TEE type", [](Scenario &s) { s.quote.teeType = 0x81000000; },
         malformed(u"unsupportedTEEType(2164260864)"_s)},
        {"TEE type before key type",
         [](Scenario &s) {
             s.quote.teeType = 0;
             s.quote.attestationKeyType = 3;
         },
         malformed(u"unsupportedTEEType(0)"_s)},
        {"key type", [](Scenario &s) { s.quote.attestationKeyType = 3; },
         malformed(u"unsupportedAttestationKeyType(3)"_s)},
        {"certification data type", [](Scenario &s) { s.quote.certificationDataType = 5; },
         malformed(u"unexpectedCertificationDataType(5)"_s)},
        {"PCK data type", [](Scenario &s) { s.quote.pckDataType = 6; },
         malformed(u"unexpectedCertificationDataType(6)"_s)},
        {"certification data past its block, bytes behind",
         [](Scenario &s) {
             s.quote.onSignatureData = [](QByteArray &data) { data[133] = 1; };
             s.quote.onQuote = [](QByteArray &quote) { quote += QByteArray(4096, 'x'); };
         },
         malformed(u"tooShort(\"certification data\")"_s)},
        {"signature data of 4 GiB",
         [](Scenario &s) { s.quote.onQuote = [](QByteArray &q) { q.replace(632, 4, "\xff\xff\xff\xff"); }; },
         malformed(u"tooShort(\"signature data\")"_s)},
        {"authentication data past its block",
         [](Scenario &s) { s.quote.onCertificationData = [](QByteArray &data) { data[449] = '\xff'; }; },
         malformed(u"tooShort(\"QE auth data\")"_s)},
        {"chain past its block",
         [](Scenario &s) { s.quote.onCertificationData = [](QByteArray &d) { d.chop(1); }; },
         malformed(u"tooShort(\"PCK chain\")"_s)},
        {"block without an end",
         [](Scenario &s) { s.quote.onPEM = [](QByteArray &pem) { pem.truncate(pem.indexOf("-----END")); }; },
         malformed(u"noCertificates"_s)},
        {"blocks of bad base64",
         [](Scenario &s) { s.quote.onPEM = [](QByteArray &pem) { pem.replace("MII", "M!I"); }; },
         malformed(u"noCertificates"_s)},
    });
}

TEST(MutationTest, TheQuotesBinding)
{
    expectVerdicts({
        {"another key's address", [](Scenario &s) { s.onReport = [](auto &r) { flip(r.reportData, 0); }; },
         u"reportDataDoesNotBindKey"_s},
        {"last byte of the address",
         [](Scenario &s) { s.onReport = [](auto &r) { flip(r.reportData, 19); }; },
         u"reportDataDoesNotBindKey"_s},
        {"no zero behind the address",
         [](Scenario &s) { s.onReport = [](auto &r) { flip(r.reportData, 25); }; },
         u"reportDataDoesNotBindKey"_s},
        {"no zero before the nonce",
         [](Scenario &s) { s.onReport = [](auto &r) { flip(r.reportData, 31); }; },
         u"reportDataDoesNotBindKey"_s},
        {"first byte of the nonce", [](Scenario &s) { s.onReport = [](auto &r) { flip(r.reportData, 32); }; },
         u"reportDataDoesNotBindNonce"_s},
        {"last byte of the nonce", [](Scenario &s) { s.onReport = [](auto &r) { flip(r.reportData, 63); }; },
         u"reportDataDoesNotBindNonce"_s},
        {"binding before hardware",
         [](Scenario &s) {
             s.onReport = [](auto &r) {
                 flip(r.reportData, 0);
                 r.tdAttributes[0] = 1;
             };
         },
         u"reportDataDoesNotBindKey"_s},
    });
}

TEST(MutationTest, TheQuotesSignatures)
{
    const QString quoteSignature = u"quote(quoteSignatureInvalid)"_s;
    const QString enclaveSignature = u"quote(quotingEnclaveSignatureInvalid)"_s;
    expectVerdicts({
        {"debug", [](Scenario &s) { s.onReport = [](auto &r) { r.tdAttributes[0] = 1; }; },
         u"quote(debugEnclave)"_s},
        {"debug before signature",
         [](Scenario &s) {
             s.onReport = [](auto &r) { r.tdAttributes[0] = '\xff'; };
             flipInQuote<650>(s);
         },
         u"quote(debugEnclave)"_s},
        {"header tail", flipInQuote<8>, quoteSignature},
        {"mrseam", flipInQuote<70>, quoteSignature},
        {"mrtd", flipInQuote<184>, quoteSignature},
        {"rtmr3", flipInQuote<567>, quoteSignature},
        {"first byte of r", flipInQuote<636>, quoteSignature},
        {"last byte of s", flipInQuote<699>, quoteSignature},
        {"no signature",
         [](Scenario &s) {
             s.quote.onQuote = [](QByteArray &q) { q.replace(636, 64, QByteArray(64, '\0')); };
         },
         quoteSignature},
        {"key off its curve", flipInQuote<700>, quoteSignature},
        {"key of zeros",
         [](Scenario &s) {
             s.quote.onQuote = [](QByteArray &q) { q.replace(700, 64, QByteArray(64, '\0')); };
         },
         quoteSignature},
        {"signature before chain",
         [](Scenario &s) {
             s.quote.chain[0].to = past;
             flipInQuote<636>(s);
         },
         quoteSignature},
        {"first byte of the QE report", flipInQuote<770>, enclaveSignature},
        {"last byte of the QE report", flipInQuote<1153>, enclaveSignature},
        {"QE report signature", flipInQuote<1154>, enclaveSignature},
        {"leaf with another key", [](Scenario &s) { replaceLeafKey(s, SigningKey::Curve::P256); },
         enclaveSignature},
        {"leaf on another curve", [](Scenario &s) { replaceLeafKey(s, SigningKey::Curve::P384); },
         enclaveSignature},
        {"root alone",
         [](Scenario &s) { s.quote.onChain = [](auto &c) { c.erase(c.begin(), c.begin() + 2); }; },
         enclaveSignature},
        {"intermediate first", [](Scenario &s) { s.quote.onChain = [](auto &c) { std::swap(c[0], c[1]); }; },
         enclaveSignature},
    });
}

TEST(MutationTest, TheQuotesChain)
{
    const QString unreadable = chainFailure(u"a certificate in the chain could not be read"_s);
    expectVerdicts({
        {"leaf expired", [](Scenario &s) { s.quote.chain[0].to = past; },
         chainFailure(u"certificate has expired"_s)},
        {"leaf expired a second ago", [](Scenario &s) { s.quote.chain[0].to = s.date.addSecs(-1); },
         chainFailure(u"certificate has expired"_s)},
        {"leaf valid in a second", [](Scenario &s) { s.quote.chain[0].from = s.date.addSecs(1); },
         chainFailure(u"certificate is not yet valid"_s)},
        {"intermediate expired", [](Scenario &s) { s.quote.chain[1].to = past; },
         chainFailure(u"certificate has expired"_s)},
        {"intermediate of the future", [](Scenario &s) { s.quote.chain[1].from = future; },
         chainFailure(u"certificate is not yet valid"_s)},
        {"judged when all have run out", [](Scenario &s) { s.date = s.date.addYears(20); },
         chainFailure(u"certificate has expired"_s)},
        {"judged before any was valid", [](Scenario &s) { s.date = s.date.addYears(-20); },
         chainFailure(u"certificate is not yet valid"_s)},
        {"intermediate is no authority", [](Scenario &s) { s.quote.chain[1].isCA = false; },
         chainFailure(u"invalid CA certificate"_s)},
        {"leaf signed by a stranger",
         [](Scenario &s) { s.quote.chain[0].issuerKey = SigningKey(SigningKey::Curve::P256); },
         chainFailure(u"certificate signature failure"_s)},
        {"leaf of another issuer", [](Scenario &s) { s.quote.chain[0].issuer = u"Someone Else"_s; },
         chainFailure(u"unable to get local issuer certificate"_s)},
        {"no intermediate", [](Scenario &s) { s.quote.onChain = [](auto &c) { c.erase(c.begin() + 1); }; },
         chainFailure(u"unable to get local issuer certificate"_s)},
        {"demand that nobody understands",
         [](Scenario &s) { s.quote.chain[0].unknownCriticalExtension = true; },
         chainFailure(u"unhandled critical extension"_s)},
        {"certificate cut short", [](Scenario &s) { s.quote.onChain = [](auto &c) { c[1].chop(1); }; },
         unreadable},
        {"byte behind a certificate", [](Scenario &s) { s.quote.onChain = [](auto &c) { c[0] += '\0'; }; },
         unreadable},
        {"empty block", [](Scenario &s) { s.quote.onChain = [](auto &c) { c[0].clear(); }; }, unreadable},
        {"another root", [](Scenario &s) { s.quote.onChain = [](auto &c) { c.back() = strangeRoot(); }; },
         chainFailure(strangeRootReason())},
        {"another root before unreadable certificates",
         [](Scenario &s) {
             s.quote.onChain = [](auto &c) {
                 c[0] = "junk";
                 c.back() = strangeRoot();
             };
         },
         chainFailure(strangeRootReason())},
        {"a certificate behind the root",
         [](Scenario &s) { s.quote.onChain = [](auto &c) { c.push_back(strangeRoot()); }; },
         chainFailure(strangeRootReason())},
        {"pin of another root", [](Scenario &s) { s.pins.intelRootSHA256 = s.pins.nvidiaRootSHA256; },
         chainFailure(
             u"the chain ends at an unexpected root (%1)"_s.arg(Scenario().pins.intelRootSHA256.left(16)))},
    });
}

TEST(MutationTest, TheQuotingEnclave)
{
    const QString notBound = u"quote(attestationKeyNotBoundToQuotingEnclave)"_s;
    const auto notIntel = [](const char *reason) {
        return u"quote(quotingEnclaveNotIntel(\"%1\"))"_s.arg(QLatin1StringView(reason));
    };
    expectVerdicts({
        {"another key's digest", flipInQEReport<320>, notBound},
        {"last byte of the digest", flipInQEReport<351>, notBound},
        {"no zero behind the digest", flipInQEReport<352>, notBound},
        {"no zero at the end", flipInQEReport<383>, notBound},
        {"authentication data", [](Scenario &s) { flipInQuote<1221>(s); }, notBound},
        {"binding before identity",
         [](Scenario &s) {
             s.quote.qeProduct = 1;
             flipInQEReport<320>(s);
         },
         notBound},
        {"debug", [](Scenario &s) { s.quote.qeAttributes |= 2; },
         notIntel("the quoting enclave is in debug mode")},
        {"debug before signer",
         [](Scenario &s) {
             s.quote.qeAttributes |= 2;
             flip(s.quote.qeSigner, 0);
         },
         notIntel("the quoting enclave is in debug mode")},
        {"signer", [](Scenario &s) { flip(s.quote.qeSigner, 0); },
         notIntel("the quoting enclave was signed by 4151515151515151, not by Intel")},
        {"last byte of the signer", [](Scenario &s) { flip(s.quote.qeSigner, 31); },
         notIntel("the quoting enclave was signed by 5151515151515151, not by Intel")},
        {"product", [](Scenario &s) { s.quote.qeProduct = 1; },
         notIntel("the quoting enclave is Intel product 1, not the TDX quoting enclave")},
        {"high byte of the product", [](Scenario &s) { s.quote.qeProduct = 0x0102; },
         notIntel("the quoting enclave is Intel product 258, not the TDX quoting enclave")},
    });
}

TEST(MutationTest, TheAcceptedServer)
{
    const QString missing = u"configuration(configurationMissing)"_s;
    const QString hashMismatch = u"configuration(configurationHashMismatch)"_s;
    const QString notReviewed = u"configuration(configurationNotReviewed)"_s;
    const QString badHost = u"configuration(hostLabelNotAllowed)"_s;
    expectVerdicts({
        {"mrtd", [](Scenario &s) { s.onReport = [](auto &r) { flip(r.mrtd, 47); }; }, notListed},
        {"rtmr0", [](Scenario &s) { s.onReport = [](auto &r) { flip(r.rtmr0, 0); }; }, notListed},
        {"rtmr1", [](Scenario &s) { s.onReport = [](auto &r) { flip(r.rtmr1, 0); }; }, notListed},
        {"rtmr2", [](Scenario &s) { s.onReport = [](auto &r) { flip(r.rtmr2, 0); }; }, notListed},
        {"rtmr3", [](Scenario &s) { s.onReport = [](auto &r) { flip(r.rtmr3, 0); }; }, bootMismatch},
        {"image before configuration",
         [](Scenario &s) {
             s.onReport = [](auto &r) { flip(r.mrtd, 0); };
             s.onDocument = [](Document d) { d.remove(u"info"_s); };
         },
         notListed},
        {"no configuration",
         [](Scenario &s) { s.onDocument = [](Document d) { replaceInfo(d, "tcb_info"_L1, 1); }; }, missing},
        {"empty configuration",
         [](Scenario &s) {
             s.onDocument = [](Document d) {
                 replaceInfo(d, "tcb_info"_L1, QJsonObject{{u"app_compose"_s, u""_s}});
             };
         },
         missing},
        {"tcb_info that is no JSON",
         [](Scenario &s) { s.onDocument = [](Document d) { replaceInfo(d, "tcb_info"_L1, u"{"_s); }; },
         missing},
        {"no instance",
         [](Scenario &s) { s.onDocument = [](Document d) { replaceInfo(d, "instance_id"_L1, {}); }; },
         missing},
        {"instance in upper case",
         [](Scenario &s) {
             s.onDocument = [](Document d) { replaceInfo(d, "instance_id"_L1, QString(40, u'B')); };
         },
         missing},
        {"instance of 39 digits",
         [](Scenario &s) {
             s.onDocument = [](Document d) { replaceInfo(d, "instance_id"_L1, QString(39, u'b')); };
         },
         missing},
        {"another instance",
         [](Scenario &s) {
             s.onDocument = [](Document d) { replaceInfo(d, "instance_id"_L1, QString(40, u'b')); };
         },
         bootMismatch},
        {"text that wasn't measured",
         [](Scenario &s) { s.onReport = [](auto &r) { flip(r.mrconfigid, 1); }; }, hashMismatch},
        {"no measured text", [](Scenario &s) { s.onReport = [](auto &r) { r.mrconfigid.fill('\0'); }; },
         hashMismatch},
        {"register of another kind", [](Scenario &s) { s.onReport = [](auto &r) { r.mrconfigid[0] = 2; }; },
         hashMismatch},
        {"register with a byte behind the hash",
         [](Scenario &s) { s.onReport = [](auto &r) { r.mrconfigid[40] = 1; }; }, hashMismatch},
        {"byte before the host", [](Scenario &s) { s.configurationText.replace(u"service"_s, u"servicf"_s); },
         notReviewed},
        {"byte behind the host", [](Scenario &s) { s.configurationText.replace(u"déjà"_s, u"déja"_s); },
         notReviewed},
        {"byte at the very end", [](Scenario &s) { s.configurationText += u'\n'; }, notReviewed},
        {"no host", [](Scenario &s) { setHost(s, u""_s); }, notReviewed},
        {"negative prefix", [](Scenario &s) { s.stack.configurations[0].prefixLength = -1; }, notReviewed},
        {"negative suffix", [](Scenario &s) { s.stack.configurations[0].suffixLength = -1; }, notReviewed},
        {"endless prefix",
         [](Scenario &s) {
             s.stack.configurations[0].prefixLength = std::numeric_limits<std::int64_t>::max();
         },
         notReviewed},
        {"endless suffix",
         [](Scenario &s) {
             s.stack.configurations[0].suffixLength = std::numeric_limits<std::int64_t>::max();
         },
         notReviewed},
        {"no configuration reviewed", [](Scenario &s) { s.stack.configurations.clear(); }, notReviewed},
        {"host of 33 bytes", [](Scenario &s) { setHost(s, QString(33, u'a')); }, badHost},
        {"host with a hyphen in front", [](Scenario &s) { setHost(s, u"-a"_s); }, badHost},
        {"host in upper case", [](Scenario &s) { setHost(s, u"hostA"_s); }, badHost},
        {"host that closes the string", [](Scenario &s) { setHost(s, u"a\",\"x\":\"b"_s); }, badHost},
        {"host beyond ASCII", [](Scenario &s) { setHost(s, u"höst"_s); }, badHost},
        {"events in another order",
         [](Scenario &s) {
             s.onAcceptedStack = [](auto &t) { std::swap(t.bootEvents[0], t.bootEvents[1]); };
         },
         bootMismatch},
        {"event left out", [](Scenario &s) { s.onAcceptedStack = [](auto &t) { t.bootEvents.pop_back(); }; },
         bootMismatch},
        {"payload",
         [](Scenario &s) { s.onAcceptedStack = [](auto &t) { t.bootEvents[1].payload = u"00aabc"_s; }; },
         bootMismatch},
        {"compose hash twice",
         [](Scenario &s) {
             s.stack.bootEvents.push_back({u"compose-hash"_s, std::nullopt});
         },
         bootMismatch},
        {"no instance event", [](Scenario &s) { s.stack.bootEvents.erase(s.stack.bootEvents.begin() + 3); },
         bootMismatch},
        {"stored payload of the live instance",
         [](Scenario &s) {
             s.onAcceptedStack = [](auto &t) {
                 t.bootEvents[3].payload = QString(40, u'2').replace(u"22"_s, u"2b"_s);
             };
         },
         bootMismatch},
        {"payload missing", [](Scenario &s) { s.stack.bootEvents[1].payload.reset(); }, bootMismatch},
        {"payload not hex", [](Scenario &s) { s.stack.bootEvents[1].payload = u"0"_s; }, bootMismatch},
        {"event without a name", [](Scenario &s) { s.stack.bootEvents[0].name.clear(); }, bootMismatch},
        {"event name with a colon", [](Scenario &s) { s.stack.bootEvents[0].name = u"a:b"_s; }, bootMismatch},
    });
}

TEST(MutationTest, TheGraphicsChipsPayload)
{
    expectVerdicts({
        {"no payload", [](Scenario &s) { s.onDocument = [](Document d) { d.remove(u"nvidia_payload"_s); }; },
         u"gpuEvidenceMissing"_s},
        {"empty payload",
         [](Scenario &s) { s.onDocument = [](Document d) { d["nvidia_payload"_L1] = u""_s; }; },
         u"gpuEvidenceMissing"_s},
        {"omitted, though a good one is there",
         [](Scenario &s) { s.onDocument = [](Document d) { d["gpu_evidence_omitted"_L1] = true; }; },
         u"gpuEvidenceMissing"_s},
        {"no JSON", [](Scenario &s) { s.onDocument = [](Document d) { d["nvidia_payload"_L1] = u"{"_s; }; },
         malformedPayload},
        {"no object",
         [](Scenario &s) { s.onDocument = [](Document d) { d["nvidia_payload"_L1] = u"[]"_s; }; },
         malformedPayload},
        {"no nonce", [](Scenario &s) { s.onPayload = [](Document p) { p.remove(u"nonce"_s); }; },
         malformedPayload},
        {"odd nonce", [](Scenario &s) { s.onPayload = [](Document p) { p["nonce"_L1] = u"abc"_s; }; },
         malformedPayload},
        {"no list", [](Scenario &s) { s.onPayload = [](Document p) { p.remove(u"evidence_list"_s); }; },
         malformedPayload},
        {"list of texts",
         [](Scenario &s) { s.onPayload = [](Document p) { p["evidence_list"_L1] = QJsonArray{u"x"_s}; }; },
         malformedPayload},
        {"empty list", [](Scenario &s) { s.gpus.clear(); }, u"gpuEvidence(noEvidence)"_s},
        {"nonce is read before the list",
         [](Scenario &s) {
             s.gpus.clear();
             s.onPayload = [](Document p) { p["nonce"_L1] = 1; };
         },
         malformedPayload},
        {"no report", [](Scenario &s) { s.gpus[1].onEntry = [](Document e) { e.remove(u"evidence"_s); }; },
         malformedPayload},
        {"report no base64",
         [](Scenario &s) { s.gpus[1].onEntry = [](Document e) { e["evidence"_L1] = u"A"_s; }; },
         malformedPayload},
        {"no certificate",
         [](Scenario &s) { s.gpus[0].onEntry = [](Document e) { e.remove(u"certificate"_s); }; },
         malformedPayload},
        {"certificate no base64",
         [](Scenario &s) { s.gpus[0].onEntry = [](Document e) { e["certificate"_L1] = u"é==="_s; }; },
         malformedPayload},
        {"device without a nonce",
         [](Scenario &s) { s.gpus[0].onEntry = [](Document e) { e.remove(u"nonce"_s); }; }, malformedPayload},
        {"stale payload", [](Scenario &s) { s.onPayload = [](Document p) { p["nonce"_L1] = u"5a"_s; }; },
         u"gpuEvidence(nonceMismatch(-1))"_s},
    });
}

TEST(MutationTest, TheGraphicsChips)
{
    const QString general = u"the certificate chain did not verify"_s;
    expectVerdicts({
        {"stale device", [](Scenario &s) { flip(s.gpus[1].nonce, 0); }, u"gpuEvidence(nonceMismatch(1))"_s},
        {"stale report", [](Scenario &s) { flip(s.gpus[1].reportNonce, 31); },
         u"gpuEvidence(nonceNotInReport(1))"_s},
        {"nothing between nonce and signature", [](Scenario &s) { s.gpus[0].body.clear(); },
         u"gpuEvidence(nonceNotInReport(0))"_s},
        {"empty report", [](Scenario &s) { s.gpus[0].onReport = [](QByteArray &r) { r.clear(); }; },
         u"gpuEvidence(nonceNotInReport(0))"_s},
        {"nonce before report",
         [](Scenario &s) {
             flip(s.gpus[0].nonce, 0);
             s.gpus[0].body.clear();
         },
         u"gpuEvidence(nonceMismatch(0))"_s},
        {"no certificates", [](Scenario &s) { s.gpus[0].onPEM = [](QByteArray &pem) { pem = "none"; }; },
         gpuChainFailure(0, general)},
        {"certificate cut short", [](Scenario &s) { s.gpus[1].onChain = [](auto &c) { c[2].chop(1); }; },
         gpuChainFailure(1, general)},
        {"another root", [](Scenario &s) { s.gpus[1].onChain = [](auto &c) { c.back() = strangeRoot(); }; },
         gpuChainFailure(1, strangeRootReason())},
        {"another root before the signature",
         [](Scenario &s) {
             s.gpus[1].onChain = [](auto &c) { c.back() = strangeRoot(); };
             s.gpus[1].onReport = [](QByteArray &r) { flip(r, 100); };
         },
         gpuChainFailure(1, strangeRootReason())},
        {"leaf expired", [](Scenario &s) { s.gpus[1].chain[0].to = past; },
         gpuChainFailure(1, u"certificate has expired"_s)},
        {"intermediate of the future", [](Scenario &s) { s.gpus[0].chain[3].from = future; },
         gpuChainFailure(0, u"certificate is not yet valid"_s)},
        {"leaf signed by a stranger",
         [](Scenario &s) { s.gpus[0].chain[0].issuerKey = SigningKey(SigningKey::Curve::P384); },
         gpuChainFailure(0, u"certificate signature failure"_s)},
        {"device is no authority", [](Scenario &s) { s.gpus[0].chain[1].isCA = false; },
         gpuChainFailure(0, u"invalid CA certificate"_s)},
        {"report header", [](Scenario &s) { s.gpus[0].onReport = [](QByteArray &r) { flip(r, 0); }; },
         u"gpuEvidence(signatureInvalid(0))"_s},
        {"report body", [](Scenario &s) { s.gpus[1].onReport = [](QByteArray &r) { flip(r, 40); }; },
         u"gpuEvidence(signatureInvalid(1))"_s},
        {"signature", [](Scenario &s) { s.gpus[1].onReport = [](QByteArray &r) { flip(r, r.size() - 1); }; },
         u"gpuEvidence(signatureInvalid(1))"_s},
        {"leaf on another curve",
         [](Scenario &s) { s.gpus[0].chain[0].key = SigningKey(SigningKey::Curve::P256); },
         u"gpuEvidence(signatureInvalid(0))"_s},
        {"the first of two that fail",
         [](Scenario &s) {
             s.gpus[0].onReport = [](QByteArray &r) { flip(r, 40); };
             flip(s.gpus[1].nonce, 0);
         },
         u"gpuEvidence(signatureInvalid(0))"_s},
        {"the third of three",
         [](Scenario &s) {
             s.gpus.push_back(s.gpus[0]);
             s.gpus[2].onReport = [](QByteArray &r) { flip(r, 40); };
         },
         u"gpuEvidence(signatureInvalid(2))"_s},
        {"server before graphics chips",
         [](Scenario &s) {
             s.gpus.clear();
             setHost(s, u"-"_s);
         },
         u"configuration(hostLabelNotAllowed)"_s},
    });
}

} // namespace morvane
