#include "view_models/chat/HandedOver.h"

#include <QMimeData>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Those that can be read, what keeps every pixel first.
QString pictureFormatOf(const QMimeData &data)
{
    static const QStringList formats{u"image/png"_s,  u"image/webp"_s, u"image/tiff"_s,
                                     u"image/jpeg"_s, u"image/gif"_s,  u"image/bmp"_s};
    const auto found =
        std::ranges::find_if(formats, [&data](const QString &format) { return data.hasFormat(format); });
    return found == formats.end() ? QString() : *found;
}

QList<QUrl> filesOf(const QMimeData &data)
{
    QList<QUrl> files = data.urls();
    files.removeIf([](const QUrl &url) { return !url.isLocalFile(); });
    return files;
}

bool isPictureMeant(const QMimeData &data, HandedOver::Order order)
{
    return order == HandedOver::Order::pictureFirst || !data.hasText();
}

} // namespace

HandedOver HandedOver::of(const QMimeData &data, Order order)
{
    HandedOver handed{.isConcealed = data.data(u"x-kde-passwordManagerHint"_s) == "secret"};
    handed.files = filesOf(data);
    const QString format = pictureFormatOf(data);
    if (handed.files.isEmpty() && !format.isEmpty() && isPictureMeant(data, order))
        handed.image = data.data(format);
    handed.text = data.text();
    return handed;
}

bool HandedOver::holdsAttachment(const QMimeData &data, Order order)
{
    return !filesOf(data).isEmpty() || (!pictureFormatOf(data).isEmpty() && isPictureMeant(data, order));
}

} // namespace morvane
