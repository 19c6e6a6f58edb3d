#include "app/WindowIcon.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace morvane {

using namespace Qt::StringLiterals;

QIcon windowIcon()
{
    QSvgRenderer drawing(u":/qt/qml/Morvane/icons/morvane.svg"_s);
    QIcon icon;
    for (const int side : {16, 22, 24, 32, 48, 64, 128}) { // pixels
        QPixmap picture(side, side);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        drawing.render(&painter);
        painter.end();
        icon.addPixmap(picture);
    }
    return icon;
}

} // namespace morvane
