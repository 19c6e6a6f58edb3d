#include "markdown/ChartValues.h"

#include <algorithm>
#include <cmath>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using MarkdownRenderer::ChartPoint;

constexpr QChar minus = u'\u2212';
constexpr qsizetype longestSymbol = 3; // "GiB", "mph"

struct Size {
    QLatin1StringView word;
    double factor;
};

constexpr Size words[] = {
    {"thousand"_L1, 1e3}, {"million"_L1, 1e6}, {"millions"_L1, 1e6},  {"mn"_L1, 1e6},
    {"mln"_L1, 1e6},      {"mio"_L1, 1e6},     {"billion"_L1, 1e9},   {"bn"_L1, 1e9},
    {"billions"_L1, 1e9}, {"bln"_L1, 1e9},     {"trillion"_L1, 1e12}, {"trillions"_L1, 1e12},
    {"tn"_L1, 1e12},      {"trn"_L1, 1e12},
};
constexpr Size letters[] = {{"k"_L1, 1e3}, {"m"_L1, 1e6}, {"b"_L1, 1e9}, {"t"_L1, 1e12}};

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

template <std::size_t count>
double factorOf(const Size (&sizes)[count], QStringView unit)
{
    const auto found = std::find_if(std::begin(sizes), std::end(sizes), [unit](const Size &size) {
        return unit.compare(size.word, Qt::CaseInsensitive) == 0;
    });
    return found == std::end(sizes) ? 0 : found->factor;
}

// The letters behind the last digit.
QStringView unitOf(QStringView value)
{
    const auto digits = std::find_if(value.rbegin(), value.rend(), isDigit) - value.rbegin();
    const QStringView behind = value.last(digits).trimmed();
    const auto end = std::find_if_not(behind.begin(), behind.end(), [](QChar c) { return c.isLetter(); });
    return behind.first(end - behind.begin());
}

bool isMoney(QStringView value)
{
    return std::any_of(value.begin(), value.end(),
                       [](QChar c) { return c.category() == QChar::Symbol_Currency; });
}

// What the letters of a chart mean, which takes all of its values to tell.
class Units {
public:
    explicit Units(const QList<ChartPoint> &points)
    {
        for (const ChartPoint &point : points) {
            const QStringView unit = unitOf(point.display);
            m_spellsSizes = m_spellsSizes || isMoney(point.display) || factorOf(words, unit) > 0;
            const bool isShort = !unit.isEmpty() && unit.size() <= longestSymbol;
            m_hasSymbols =
                m_hasSymbols || (isShort && factorOf(words, unit) == 0 && factorOf(letters, unit) == 0);
        }
    }

    // 1 where no size stands. A small "m" is as often a metre or a minute.
    [[nodiscard]] double factor(QStringView value) const
    {
        const QStringView unit = unitOf(value);
        if (const double factor = factorOf(words, unit); factor > 0)
            return factor;
        const bool isSize =
            !m_hasSymbols && !unit.isEmpty() && (unit[0].isUpper() || unit == "k"_L1 || m_spellsSizes);
        return isSize ? std::max(factorOf(letters, unit), 1.0) : 1;
    }

private:
    bool m_spellsSizes = false;
    bool m_hasSymbols = false; // of units, such as "KB" or "kg"
};

bool isBelowZero(QStringView value)
{
    const auto digit = std::find_if(value.begin(), value.end(), isDigit);
    return std::find(value.begin(), digit, minus) != digit;
}

} // namespace

std::optional<LineGrammar::LabelValue> ChartValues::labelValue(QStringView line)
{
    if (line.contains(u'|'))
        return LineGrammar::labelValue(line);
    const auto isInTime = [line](qsizetype at) {
        return at > 0 && at + 2 < line.size() && isDigit(line[at - 1]) && isDigit(line[at + 1]) &&
               isDigit(line[at + 2]);
    };
    qsizetype at = line.indexOf(u':');
    while (at >= 0 && isInTime(at))
        at = line.indexOf(u':', at + 1);
    if (at < 0)
        return LineGrammar::labelValue(line);
    const QStringView label = LineGrammar::trimmed(line.first(at));
    const QStringView value = LineGrammar::trimmed(line.sliced(at + 1));
    if (label.isEmpty() || value.isEmpty())
        return std::nullopt;
    return LineGrammar::LabelValue{label.toString(), value.toString()};
}

std::optional<double> ChartValues::number(QStringView value)
{
    QString digits;
    for (const QChar c : value) {
        if (isDigit(c) || c == u'.' || c == u'-')
            digits += c;
    }
    bool isNumber = false;
    const double number = digits.toDouble(&isNumber);
    if (!isNumber || !std::isfinite(number))
        return std::nullopt;
    return number;
}

void ChartValues::scale(QList<ChartPoint> &points)
{
    const Units units(points);
    for (ChartPoint &point : points) {
        const double size = std::abs(point.value) * units.factor(point.display);
        const bool falls = point.value < 0 || isBelowZero(point.display);
        if (std::isfinite(size))
            point.scaled = falls ? -size : size;
    }
}

} // namespace morvane
