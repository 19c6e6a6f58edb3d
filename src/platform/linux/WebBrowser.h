#pragma once

#include <QUrl>

namespace morvane {

// The browser that the desktop has for addresses of the web.
namespace WebBrowser {

void open(const QUrl &address);

} // namespace WebBrowser

} // namespace morvane
