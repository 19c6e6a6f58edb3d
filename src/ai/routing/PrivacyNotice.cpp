#include "ai/routing/PrivacyNotice.h"

#include "utils/text/Text.h"

#include <QUrl>

namespace morvane {

using namespace Qt::StringLiterals;

std::optional<PrivacyNotice> PrivacyNotice::of(const ChatSource &source, const QString &baseURLString)
{
    switch (source.kind) {
    case ChatSource::Kind::thisMac:
    case ChatSource::Kind::morvaneCloud:
    case ChatSource::Kind::notConfigured:
        return std::nullopt;
    case ChatSource::Kind::ollamaCloud:
        return PrivacyNotice{Kind::notPrivate, u"ollama.com"_s};
    case ChatSource::Kind::network:
        if (QUrl(Text::trimmed(baseURLString)).scheme() == "https"_L1)
            return std::nullopt;
        return PrivacyNotice{Kind::unencryptedOnNetwork, source.host};
    case ChatSource::Kind::customCloud:
        return PrivacyNotice{Kind::notPrivate, source.host};
    }
    return std::nullopt;
}

} // namespace morvane
