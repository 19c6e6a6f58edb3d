#pragma once

#include <boost/asio/steady_timer.hpp>

#include <set>

namespace morvane {

// Where an exchange waits until it is told to go on, so that a test can do something in the middle of it. A
// word to go on that comes before anyone waits counts for the next who does.
class HoldPoint {
public:
    // The exchange that waits on `timer` is woken by goOn(), to look whether the word was for it.
    [[nodiscard]] bool takeWord();
    void wait(boost::asio::steady_timer *timer) { m_waiting.insert(timer); }
    void leave(boost::asio::steady_timer *timer) { m_waiting.erase(timer); }

    // Lets one waiting exchange go on.
    void goOn();

private:
    int m_words = 0;
    std::set<boost::asio::steady_timer *> m_waiting;
};

} // namespace morvane
