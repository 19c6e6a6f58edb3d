#include "services/AnswerPause.h"

#include "async/Clock.h"

#include <algorithm>

namespace morvane {

using namespace std::chrono_literals;
using std::chrono::seconds;

seconds AnswerPause::left() const
{
    return std::max(0s, std::chrono::ceil<seconds>(m_until - m_clock.elapsed()));
}

void AnswerPause::wrong()
{
    constexpr seconds longest = 64s;
    const seconds pause(1LL << std::min(m_wrongAnswers++, 10));
    m_until = m_clock.elapsed() + std::min(longest, pause);
}

void AnswerPause::right()
{
    m_wrongAnswers = 0;
}

} // namespace morvane
