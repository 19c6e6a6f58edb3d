#include "platform/linux/WebBrowser.h"

#include <QDesktopServices>

void WebBrowser::open(const QUrl &address)
{
    QDesktopServices::openUrl(address);
}
