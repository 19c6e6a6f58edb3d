#include "loopback/HoldPoint.h"

namespace morvane {

bool HoldPoint::takeWord()
{
    if (m_words == 0)
        return false;
    --m_words;
    return true;
}

void HoldPoint::goOn()
{
    ++m_words;
    for (boost::asio::steady_timer *timer : m_waiting)
        timer->cancel();
}

} // namespace morvane
