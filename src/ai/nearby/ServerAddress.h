#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace morvane {

// A computer's name or address, as a person types it, made into base addresses of a model server.
namespace ServerAddress {

// "box", "Box.local", "192.168.1.5:1234", "fd00::1", "https://models.example.com/v1": one address for each of
// `ports`, or one alone where the text names a port. A bare name is one of the local network. None for a
// text that is no name or address, and for a host outside without https.
[[nodiscard]] QStringList candidates(const QString &text, const std::vector<int> &ports);

} // namespace ServerAddress

} // namespace morvane
