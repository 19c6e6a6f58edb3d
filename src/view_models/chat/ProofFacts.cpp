#include "view_models/chat/ProofFacts.h"

#include "network/LedgerExport.h"
#include "utils/text/DesktopWords.h"
#include "view_models/chat/ProofWords.h"

#include <QLocale>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Attestation = ProofLedger::Attestation;
using Kind = ProofLedger::Place::Kind;

constexpr qsizetype shownEnds = 10;    // hexadecimal digits at either end of long bytes
constexpr qsizetype longestClaim = 80; // of a server about itself, in UTF-16 units

QVariantMap fact(const QString &label, const QString &value, const QString &explanation = {})
{
    return {
        {u"label"_s, label}, {u"value"_s, value}, {u"explanation"_s, explanation}, {u"bytes"_s, QString()}};
}

QVariantMap bytesFact(const QString &label, const QByteArray &bytes, const QString &explanation)
{
    const QString hex = QString::fromLatin1(bytes.toHex());
    const QString size =
        bytes.size() == 1 ? u"1 byte"_s : u"%1 bytes"_s.arg(QLocale().toString(bytes.size()));
    const bool fits = hex.size() <= 2 * shownEnds + 1;
    const QString shown = fits ? hex : hex.left(shownEnds) + u'…' + hex.right(shownEnds);
    QVariantMap fact = ::morvane::fact(label, shown + u" · "_s + size, explanation);
    fact[u"bytes"_s] = hex;
    return fact;
}

QString timeText(const QDateTime &moment)
{
    const QDateTime local = moment.toLocalTime();
    return QLocale().toString(local.date(), QLocale::LongFormat) + local.time().toString(u", HH:mm:ss"_s);
}

QVariantMap chipsFact(const Attestation &proof)
{
    const QString label = u"Graphics chips"_s;
    if (proof.verifiedGPUCount >= 1)
        return fact(label,
                    proof.verifiedGPUCount == 1
                        ? u"1 graphics chip report verified"_s
                        : u"%1 graphics chip reports verified"_s.arg(proof.verifiedGPUCount),
                    u"Signed over the nonce below, by certificates that lead to NVIDIA's root. Reports are "
                    "counted, not chips."_s);
    if (proof.requiresGPUEvidence)
        return fact(label, u"no graphics chip proof"_s,
                    u"The list of accepted servers asks for one, and this row holds none."_s);
    return fact(label, u"graphics chips not checked"_s,
                u"The list of accepted servers asks for no proof of them."_s);
}

// The server's own words may be anything.
QString claimOf(const Attestation &proof)
{
    QString claim = proof.teeProvider.value_or(QString()).simplified();
    if (claim.size() > longestClaim)
        claim = claim.left(longestClaim) + u'…';
    const QString verified = proof.serverClaimedVerified ? u"“verified”"_s : u"not “verified”"_s;
    return claim.isEmpty() ? verified : u"“%1”, %2"_s.arg(claim, verified);
}

QVariantList factsOf(const Attestation &proof, bool isEarlier)
{
    QVariantList facts{
        fact(u"Checked"_s, timeText(proof.verifiedAt),
             isEarlier ? u"For an earlier message. A proof counts for half an hour."_s
                       : u"As this message was about to be sent."_s),
        fact(
            u"Server"_s, proof.stackLabel,
            u"What the list of accepted servers calls the base system and configuration that were measured."_s),
        chipsFact(proof),
        bytesFact(u"Processor's report"_s, proof.quote,
                  u"An Intel TDX quote. Its signature holds, and its certificates lead to Intel's root."_s),
        bytesFact(
            u"Nonce"_s, proof.nonce,
            u"Random bytes made up on this %1 for this proof. The report ends its data with them, so it is "
            "not an old one."_s.arg(DesktopWords::here().device)),
        bytesFact(
            u"Base system (mrtd)"_s, proof.mrtd,
            u"The image that the server started from, as the processor measured it. It is on the list."_s),
        bytesFact(u"Boot (rtmr3)"_s, proof.rtmr3,
                  u"What the server measured as it started. The accepted steps, replayed, lead to it."_s)};
    if (proof.composeHash)
        facts += bytesFact(u"Configuration (compose hash)"_s, *proof.composeHash,
                           u"The digest of the configuration, which is one that was reviewed."_s);
    facts += bytesFact(u"Signing address"_s, proof.signingAddress,
                       u"Derived from the key below, and named in the processor's report."_s);
    facts += bytesFact(u"Model's public key"_s, proof.modelPublicKey,
                       u"Messages are encrypted to this key and to no other."_s);
    facts += fact(u"The server says of itself"_s, claimOf(proof), u"Shown, and counts for nothing."_s);
    return facts;
}

QStringList limitsOf(const Attestation &proof)
{
    return {
        u"The programs that the operator runs on the base system: what they do with a message, and what they "
        "can be made to do."_s,
        u"Withdrawn certificates and old firmware: no revocation list is fetched, and no level of the "
        "processor or of its TDX module is judged."_s,
        u"Physical attacks: someone who holds the machine, or a key taken from another."_s,
        proof.verifiedGPUCount >= 1 ? u"Where the graphics chips are: nothing ties them to this server, one "
                                      u"chip can answer twice, and "
                                      "what they measure of themselves is not read."_s
                                    : u"Graphics chips: nothing was verified of them."_s,
        u"Which message this was: the row is this program's own record, and the bytes are the evidence."_s};
}

QString whyNoProof(Kind kind)
{
    switch (kind) {
    case Kind::thisMac:
        return u"There is no hardware proof here, and none is needed for a model on this %1."_s.arg(
            DesktopWords::here().device);
    case Kind::network:
        return u"There is no hardware proof here. Whoever runs that server can read what is sent to it."_s;
    case Kind::yourOwnService:
    case Kind::ollamaCloud:
    case Kind::morvaneCloud:
        return u"There is no hardware proof here. The service can read what is sent to it."_s;
    case Kind::verifiedEnclave:
    case Kind::enclaveRefused:
        return u"There is no proof in this row, so nothing is vouched for."_s;
    }
    return {};
}

} // namespace

QVariantList ProofFacts::of(const ProofLedger::Entry &row)
{
    QVariantList facts{fact(u"Time"_s, timeText(row.startedAt)),
                       fact(u"Where"_s, row.place.plainName(), ProofWords::outcome(row))};
    if (!row.place.host.isEmpty())
        facts += fact(u"Host"_s, row.place.host);
    facts += fact(u"Model"_s, row.place.model.isEmpty() ? u"none named"_s : row.place.model);
    facts += fact(u"Purpose"_s, row.purpose);
    facts += fact(u"Your data"_s, LedgerExport::carriedLabels(row.carrying));
    if (row.attestation)
        facts += factsOf(*row.attestation, row.wasVerifiedEarlier());
    if (row.acceptedServersList)
        facts += fact(u"Accepted servers"_s, *row.acceptedServersList,
                      u"The list that the server was judged by."_s);
    return facts;
}

QStringList ProofFacts::limits(const ProofLedger::Entry &row)
{
    return row.attestation ? limitsOf(*row.attestation) : QStringList{whyNoProof(row.place.kind)};
}

} // namespace morvane
