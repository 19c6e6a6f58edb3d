#include "view_models/chat/SmallModel.h"

#include <QRegularExpression>

namespace morvane {

using namespace Qt::StringLiterals;

QString SmallModel::noticeFor(const ChatSource &source)
{
    constexpr double largeEnough = 16;
    static const QRegularExpression size(u"(\\d+(?:\\.\\d+)?)b\\b"_s,
                                         QRegularExpression::CaseInsensitiveOption);
    if (source.kind != ChatSource::Kind::thisMac && source.kind != ChatSource::Kind::network)
        return {};
    const auto match = size.match(source.model);
    if (!match.hasMatch() || match.captured(1).toDouble() >= largeEnough)
        return {};
    return u"This setup runs a small AI model, which limits its answers. A larger model in Settings > AI "
           "answers better."_s;
}

} // namespace morvane
