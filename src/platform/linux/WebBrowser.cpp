#include "platform/linux/WebBrowser.h"

#include <QDesktopServices>

namespace morvane {

void WebBrowser::open(const QUrl &address)
{
    QDesktopServices::openUrl(address);
}

} // namespace morvane
