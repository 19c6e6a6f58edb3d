#include "platform/linux/StatusNotifierFace.h"

#include "utils/text/Product.h"

namespace morvane {

QString StatusNotifierFace::id()
{
    return Product::desktopId;
}

QString StatusNotifierFace::title()
{
    return Product::name;
}

void StatusNotifierFace::Activate(int, int)
{
    if (onActivated)
        onActivated();
}

void StatusNotifierFace::SecondaryActivate(int x, int y)
{
    Activate(x, y);
}

void StatusNotifierFace::ContextMenu(int, int) const {}

void StatusNotifierFace::Scroll(int, const QString &) const {}

} // namespace morvane
