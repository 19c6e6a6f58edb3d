#include "ai/private_cloud/SealedReply.h"

#include "ai/contract/ProviderError.h"
#include "ai/private_cloud/ToolBlock.h"
#include "ai/providers/LineJson.h"
#include "ai/providers/ToolCallAccumulator.h"
#include "utils/log/Log.h"
#include "utils/text/Text.h"

#include <QJsonArray>
#include <QUuid>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = ProviderError::Plain;

namespace {

constexpr QByteArrayView prefix{"data:"};
constexpr QByteArrayView sentinel{"[DONE]"};
constexpr auto category = Log::Category::AIProvider;

bool isHexDigit(QChar c)
{
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

bool isSealed(const QString &content)
{
    return content.size() >= 2 * VeniceE2EESession::smallestSealed &&
           std::all_of(content.begin(), content.end(), isHexDigit);
}

// Two names are in use for it.
bool hasReasoning(const QJsonObject &delta)
{
    return !delta["reasoning_content"_L1].toString().isEmpty() || !delta["reasoning"_L1].toString().isEmpty();
}

ProviderError unverified(const QString &what)
{
    return {ProviderError::EnclaveUnverified{what + VeniceAttestationVerifier::Failure::localReplyEnding()}};
}

} // namespace

SealedReply::Progress SealedReply::add(QByteArrayView line, Events &events)
{
    if (!line.startsWith(prefix))
        return Progress::goesOn;
    const QByteArrayView payload = Text::trimmedBlanks(line.sliced(prefix.size()));
    if (payload == sentinel)
        return Progress::done;
    const auto object = LineJson::parseObject(payload);
    if (!object)
        return Progress::goesOn;
    const QJsonObject choice = object->value("choices"_L1).toArray().first().toObject();
    const QJsonObject delta = choice["delta"_L1].toObject();
    m_isTruncated = m_isTruncated || choice["finish_reason"_L1].toString() == OpenAIStreamParser::tokenLimit;
    if (hasReasoning(delta)) {
        m_filter.noteServerSendsReasoning();
        if (!std::exchange(m_hasThought, true) && !m_hasText)
            events.yield(AIStream::Thinking{});
    }
    const QString content = delta["content"_L1].toString();
    if (isSealed(content))
        open(content, events);
    else if (!content.isEmpty())
        ++m_unsealed;
    return Progress::goesOn;
}

void SealedReply::open(const QString &content, Events &events)
{
    QString text;
    try {
        text = m_session.open(content);
    } catch (const VeniceE2EESession::Failure &) {
        Log::error(category, "Venice reply chunk did not decrypt"_L1);
        throw unverified(u"A reply from the private cloud could not be decrypted"_s);
    }
    ++m_opened;
    show(m_filter.accept(text), events);
}

void SealedReply::show(const QString &text, Events &events)
{
    QString released = m_scanner.append(text);
    if (m_scanner.sawMarker() &&
        (m_block += text.size()) > OpenAIStreamParser::ToolCallAccumulator::mostCharacters)
        throw ProviderError(Plain::replyTooLarge);
    if (released.isEmpty())
        return;
    m_hasText = true;
    events.yield(AIStream::Text{std::move(released)});
}

void SealedReply::finish(Events &events)
{
    show(m_filter.flush(), events);
    if (m_filter.droppedThinking())
        Log::info(category,
                  "Venice reply carried thinking inside the answer with no opening tag; it was dropped"_L1);
    if (QString rest = m_scanner.flush(); !rest.isEmpty())
        events.yield(AIStream::Text{std::move(rest)});
    if (m_scanner.sawMarker())
        yieldCalls(events);
    throwUnlessSealed();
    if (m_unsealed > 0)
        Log::info(category, "Venice reply carried %ld unsealed chunks; they were dropped"_L1, {m_unsealed});
    if (m_isTruncated)
        events.yield(AIStream::TruncatedByTokenLimit{});
}

void SealedReply::yieldCalls(Events &events)
{
    const QString idPrefix = u"venice-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces).left(8);
    auto calls = ToolBlock::parseToolCalls(m_scanner.block(), idPrefix);
    if (calls.size() > OpenAIStreamParser::mostToolCalls)
        throw ProviderError(Plain::tooManyCalls);
    if (calls.empty())
        Log::error(category, "Venice tool block did not parse"_L1);
    else
        events.yield(AIStream::ToolCalls{std::move(calls)});
}

void SealedReply::throwUnlessSealed() const
{
    if (m_opened > 0)
        return;
    if (m_unsealed == 0)
        throw ProviderError(Plain::emptyResponse);
    Log::error(category, "Venice reply carried %ld unsealed chunks and nothing sealed"_L1, {m_unsealed});
    throw unverified(u"A reply from the private cloud did not arrive encrypted"_s);
}

} // namespace morvane
