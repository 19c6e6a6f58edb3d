#include "services/recognition/InkPicture.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <numeric>

namespace morvane {

namespace {

constexpr int sameSurface =
    4; // most by which neighbours on one surface differ, of 255; gradients have 1 or 2
constexpr int longestInk = 48;    // pixels in a row that may be one letter's; longer ones are a surface
constexpr int leastRows = 3;      // of such length that make one
constexpr int fullContrast = 160; // from here on ink is as black as it gets

using Colour = std::array<int, 3>;

int difference(const std::uint8_t *a, const std::uint8_t *b)
{
    return std::max({std::abs(a[0] - b[0]), std::abs(a[1] - b[1]), std::abs(a[2] - b[2])});
}

// Neighbouring pixels of one row that look alike.
struct Run {
    int from;
    int to; // one past its last
};

// Rows cut into runs, and runs that touch and look alike joined into surfaces.
class Surfaces {
public:
    explicit Surfaces(const ScreenPixels &screen)
        : m_screen(screen)
    {
        for (int y = 0; y < screen.height; ++y)
            cutRow(y);
        m_rows.push_back(m_runs.size());
        m_parents.resize(m_runs.size());
        std::iota(m_parents.begin(), m_parents.end(), std::size_t{0});
        for (int y = 1; y < screen.height; ++y)
            joinRows(y);
        m_longRows.resize(m_runs.size());
        for (std::size_t run = 0; run < m_runs.size(); ++run) {
            if (m_runs[run].to - m_runs[run].from > longestInk)
                ++m_longRows[rootOf(run)];
        }
    }

    [[nodiscard]] std::span<const Run> row(int y) const
    {
        return std::span(m_runs).subspan(m_rows[y], m_rows[y + 1] - m_rows[y]);
    }
    // Whether a run, by its place in its row, belongs to something that other things are drawn on.
    [[nodiscard]] bool isSurface(int y, std::size_t place)
    {
        return m_longRows[rootOf(m_rows[y] + place)] >= leastRows;
    }

private:
    [[nodiscard]] const std::uint8_t *at(int x, int y) const
    {
        return m_screen.pixels.data() + 4 * (std::size_t(y) * m_screen.width + x);
    }
    void cutRow(int y)
    {
        m_rows.push_back(m_runs.size());
        int from = 0;
        for (int x = 1; x <= m_screen.width; ++x) {
            if (x < m_screen.width && difference(at(x, y), at(x - 1, y)) <= sameSurface)
                continue;
            m_runs.push_back({from, x});
            from = x;
        }
    }
    void joinRows(int y)
    {
        std::size_t above = m_rows[y - 1];
        std::size_t here = m_rows[y];
        while (above < m_rows[y] && here < m_rows[y + 1]) {
            const int x = std::max(m_runs[above].from, m_runs[here].from);
            if (x < std::min(m_runs[above].to, m_runs[here].to) &&
                difference(at(x, y - 1), at(x, y)) <= sameSurface)
                m_parents[rootOf(here)] = rootOf(above);
            if (m_runs[above].to < m_runs[here].to)
                ++above;
            else
                ++here;
        }
    }
    std::size_t rootOf(std::size_t run)
    {
        while (m_parents[run] != run)
            run = m_parents[run] = m_parents[m_parents[run]];
        return run;
    }

    const ScreenPixels &m_screen;
    std::vector<Run> m_runs;
    std::vector<std::size_t> m_rows; // where each row's runs begin, and where the last one's end
    std::vector<std::size_t> m_parents;
    std::vector<int> m_longRows; // by root
};

std::uint8_t inkOf(const std::uint8_t *pixel, const std::uint8_t *surface)
{
    const int contrast = std::min(difference(pixel, surface), fullContrast);
    return static_cast<std::uint8_t>(255 - contrast * 255 / fullContrast);
}

} // namespace

// What lies between two surfaces of a row is drawn on the one to its left: text keeps a margin there. Where
// a row begins with none, what was found above goes on.
std::vector<std::uint8_t> InkPicture::of(const ScreenPixels &screen)
{
    const std::size_t width = screen.width;
    std::vector<std::uint8_t> ink(width * screen.height, 255);
    if (ink.empty())
        return ink;
    Surfaces surfaces(screen);
    std::vector<std::uint8_t> below(screen.pixels.begin(), screen.pixels.begin() + 4 * width);
    for (int y = 0; y < screen.height; ++y) {
        const std::uint8_t *line = screen.pixels.data() + 4 * width * y;
        const std::uint8_t *surface = nullptr;
        const auto runs = surfaces.row(y);
        for (std::size_t place = 0; place < runs.size(); ++place) {
            const bool isSurface = surfaces.isSurface(y, place);
            for (int x = runs[place].from; x < runs[place].to; ++x) {
                const std::uint8_t *pixel = line + 4 * std::size_t(x);
                std::uint8_t *under = below.data() + 4 * std::size_t(x);
                if (isSurface)
                    surface = pixel;
                if (surface)
                    std::copy_n(surface, 4, under);
                ink[width * y + x] = inkOf(pixel, under);
            }
        }
    }
    return ink;
}

} // namespace morvane
