// Asks polkit whether somebody is there, as the lock does, and says what it was answered.

#include "platform/linux/PolkitPresence.h"

#include <QCoreApplication>

#include <array>
#include <cstdio>

int main(int argc, char **argv)
{
    using namespace morvane;
    const QCoreApplication application(argc, argv);
    PolkitPresence presence(std::chrono::seconds(20));
    const bool canConfirm = presence.canConfirm();
    const auto answer = presence.confirm({}, {});
    constexpr std::array answers{"confirmed", "refused", "dismissed", "unavailable"};
    std::printf("%s, %s\n", canConfirm ? "can be asked" : "can't be asked",
                answers.at(static_cast<std::size_t>(answer)));
    return 0;
}
