#include "ai/contract/RefusalWords.h"

#include <QRegularExpression>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

bool match(const QString &words, const QString &pattern)
{
    return QRegularExpression(pattern, QRegularExpression::CaseInsensitiveOption).match(words).hasMatch();
}

// Servers that take tools report with these words that a model called one badly, or what the template of a
// chat makes of its roles, with a piece of that template behind it.
const QString ofToolUsers =
    uR"(failed to (call|parse)|(error|failure) parsing|could ?n[o']t parse|call validation|attempted to call|)"_s
    uR"(failed_generation|must alternate|at the beginning)"_s;

const QString tools = uR"(tool|function[ _-]?call|\bfunctions\b)"_s;

// The parts of a request that a refusal can be about, and any name that is quoted or spelled as one.
const QString otherThings =
    uR"(\b(models?|messages?|roles?|system|contents?|prompt|images?|vision|multimodal|audio|tokens?|context|)"_s
    uR"(temperature|purpose|stream(ing)?|keys?|accounts?|quota|credits?|billing|balance|polic(y|ies)|safety)\b|)"_s
    uR"(^(?!error)[\w.]+: |\w_\w|(^|\W)['"`]\w)"_s;

} // namespace

RefusalWords::Subject RefusalWords::subjectOf(const QString &words)
{
    if (match(words, ofToolUsers))
        return Subject::another;
    if (match(words, tools))
        return Subject::tools;
    return match(words, otherThings) ? Subject::another : Subject::nothing;
}

} // namespace morvane
