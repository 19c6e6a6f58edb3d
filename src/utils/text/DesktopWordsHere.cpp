// A file of its own, so that a test can say the words of another desktop in its place.

#include "utils/text/DesktopWords.h"

#include <QtGlobal>

namespace morvane {

const DesktopWords &DesktopWords::here()
{
#ifdef Q_OS_MACOS
    return original;
#else
    return freedesktop;
#endif
}

} // namespace morvane
