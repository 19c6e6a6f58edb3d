// What a private-cloud server answers: sealed pieces that anyone may have made, and the text inside of them,
// cut anywhere.

#include "fuzz/Fuzz.h"

#include "ai/private_cloud/ThinkingFilter.h"
#include "ai/private_cloud/ToolBlock.h"
#include "ai/private_cloud/ToolBlockScanner.h"
#include "ai/private_cloud/VeniceE2EESession.h"
#include "utils/bytes/Hex.h"

using namespace Qt::StringLiterals;

namespace {

using namespace morvane;

struct Shown {
    QString text;
    std::vector<AIToolCall> calls;
    bool operator==(const Shown &) const = default;
};

Shown read(const QString &reply, qsizetype piece)
{
    ThinkingFilter filter;
    ToolBlockScanner scanner;
    Shown shown;
    for (qsizetype at = 0; at < reply.size(); at += piece)
        shown.text += scanner.append(filter.accept(reply.mid(at, piece)));
    shown.text += scanner.append(filter.flush());
    shown.text += scanner.flush();
    if (scanner.sawMarker())
        shown.calls = ToolBlock::parseToolCalls(scanner.block(), u"id"_s);
    return shown;
}

const Secp256k1::KeyPair &ourPair()
{
    static const Secp256k1::KeyPair pair = Secp256k1::generateKeyPair();
    return pair;
}

void openAnything(const QByteArray &bytes)
{
    try {
        const QString text = VeniceE2EESession::openWith(ourPair().privateKey, Hex::encode(bytes));
        require(text.isNull()); // nobody has the key that would make one that opens
    } catch (const VeniceE2EESession::Failure &failure) {
        require(failure.reason() == VeniceE2EESession::Failure::Reason::openFailed);
    }
}

} // namespace

void morvane::fuzz(QByteArrayView input)
{
    const QString reply = QString::fromUtf8(input);
    const Shown whole = read(reply, std::max<qsizetype>(reply.size(), 1));
    require(!whole.text.contains(ToolBlock::opening));
    // How long thinking without its opening tag is waited for is told by what has arrived.
    const bool isDecidedEarly = reply.indexOf(u"</think>"_s) < 592;
    require(reply.size() > 4096 || !isDecidedEarly || read(reply, 1) == whole);
    for (const AIToolCall &call : whole.calls)
        require(!call.name.isEmpty() && call.argumentsJSON.startsWith(u'{'));
    openAnything(input.toByteArray());
    if (isJudged(input)) // behind a key that is on the curve
        openAnything(ourPair().publicKey + input.toByteArray());
}
