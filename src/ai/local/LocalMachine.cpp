#include "ai/local/LocalMachine.h"

namespace morvane {

bool LocalMachine::Listener::isLoopback() const
{
    static const QByteArray loopback6 = QByteArray(15, '\0') + '\1';
    static const QByteArray mappedPrefix = QByteArray(10, '\0') + "\xFF\xFF";
    if (address == loopback6)
        return true;
    const bool isMapped = address.size() == 16 && address.startsWith(mappedPrefix);
    const QByteArray address4 = isMapped ? address.sliced(mappedPrefix.size()) : address;
    return address4.size() == 4 && address4.front() == 127;
}

} // namespace morvane
