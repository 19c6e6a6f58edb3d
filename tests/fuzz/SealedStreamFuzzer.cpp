// Any bytes as a sealed reply's stream. What stands between two "@" is sealed for the session first, since
// nobody else could make a piece that opens.

#include "fuzz/ReplyFuzzing.h"

#include "ai/private_cloud/SealedReply.h"

using namespace Qt::StringLiterals;

namespace {

using namespace morvane;

constexpr qsizetype sealedLimit = 4; // pieces; making a key for each takes its time

VeniceE2EESession newSession()
{
    VeniceAttestationVerifier::Verified enclave;
    enclave.modelPublicKey = QByteArray::fromHex( // the curve's own base point
        "0479be667ef9dcbbac55a06295ce870b07029bfcdb2dce28d959f2815b16f81798"
        "483ada7726a3c4655da4fbfc0e1108a8fd17b448a68554199c47d08ffb10d4b8");
    return VeniceE2EESession(enclave);
}

struct Body {
    QByteArray bytes;
    bool isSealed = false; // in any part
};

Body sealedFor(const VeniceE2EESession &session, const QByteArray &input)
{
    Body body;
    QByteArray rest = input;
    for (qsizetype pieces = 0; pieces < sealedLimit; ++pieces) {
        const qsizetype begin = rest.indexOf('@');
        const qsizetype end = begin < 0 ? -1 : rest.indexOf('@', begin + 1);
        if (end < 0)
            break;
        const QString text = QString::fromUtf8(rest.mid(begin + 1, end - begin - 1));
        body.bytes += rest.first(begin) + VeniceE2EESession::sealTo(session.publicKey(), text).toUtf8();
        body.isSealed = true;
        rest = rest.sliced(end + 1);
    }
    body.bytes += rest;
    return body;
}

QByteArray textOf(const QByteArray &input, qsizetype pieceSize)
{
    VeniceE2EESession session = newSession();
    const Body body = sealedFor(session, input);
    SealedReply reply(std::move(session));
    const QByteArray text = textOf(reply, body.bytes, pieceSize);
    require(body.isSealed || text.isEmpty() || text == "refused"); // nothing unsealed is ever shown
    return text;
}

} // namespace

// Where the network cuts must not matter.
void morvane::fuzz(QByteArrayView input)
{
    const QByteArray bytes = input.toByteArray();
    if (!bytes.isEmpty())
        require(::textOf(bytes, 1 + static_cast<uchar>(bytes[0]) % 16) == ::textOf(bytes, 1 << 20));
}
