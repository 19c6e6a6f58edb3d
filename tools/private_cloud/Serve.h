#pragma once

#include <QStringList>

namespace morvane {

// The server of the private cloud, as the command line asks for it.
namespace Serve {

// The lines of help: options, then the scenarios and lists by name.
[[nodiscard]] QByteArray help();

// Serves until a signal to end comes; the words are those behind "serve". Throws a runtime_error for words
// that mean nothing, and when it can't begin.
void run(const QStringList &words);

} // namespace Serve

} // namespace morvane
