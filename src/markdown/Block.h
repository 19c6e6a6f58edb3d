#pragma once

#include "markdown/AttributedText.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <variant>

namespace morvane {

// What a reply is made of: a flat list of blocks that the chat draws one by one.
namespace MarkdownRenderer {

struct Paragraph {
    AttributedText text;
    bool operator==(const Paragraph &) const = default;
};

struct Heading {
    int level = 1; // 1 to 4
    AttributedText text;
    bool operator==(const Heading &) const = default;
};

struct ListItem {
    static constexpr int deepest = 8;

    enum class Task { none, open, done };

    AttributedText text;
    int depth = 0; // 0 at the margin; one more under an item that it is indented below
    // As it was written, or counted on where the writer only repeats a number. None for an item with a dot.
    // Of a kind with its list, unless it stands under another item.
    std::optional<int> number;
    Task task = Task::none;
    bool operator==(const ListItem &) const = default;
};

struct BulletList {
    QList<ListItem> items;
    bool operator==(const BulletList &) const = default;
};

struct NumberedList {
    QList<ListItem> items;
    bool operator==(const NumberedList &) const = default;
};

struct Quote {
    AttributedText text;
    bool operator==(const Quote &) const = default;
};

struct Code {
    QString text;
    std::optional<QString> language;
    bool operator==(const Code &) const = default;
};

// Every row is as wide as the headers.
struct Table {
    QList<AttributedText> headers;
    QList<QList<AttributedText>> rows;
    bool operator==(const Table &) const = default;
};

struct Stat {
    QString value;
    QString label;
    std::optional<QString> delta;
    bool operator==(const Stat &) const = default;
};

struct Stats {
    QList<Stat> stats; // 1 to 4
    bool operator==(const Stats &) const = default;
};

struct Fact {
    QString label;
    QString value;
    bool operator==(const Fact &) const = default;
};

struct Facts {
    QList<Fact> facts;
    bool operator==(const Facts &) const = default;
};

// Each row is its label and one cell for each title.
struct Comparison {
    QStringList titles; // 2 to 4
    QList<QStringList> rows;
    QString heading; // of the labels; mostly empty
    bool operator==(const Comparison &) const = default;
};

struct TimelineEntry {
    QString marker;
    QString text;
    bool operator==(const TimelineEntry &) const = default;
};

struct Timeline {
    QList<TimelineEntry> entries; // 2 or more
    bool operator==(const Timeline &) const = default;
};

struct ChartPoint {
    QString label;
    double value = 0;  // finite; the digits alone
    QString display;   // the value as it was written
    double scaled = 0; // finite; the value with its sign and size, such as thousands, as it is drawn
    bool operator==(const ChartPoint &) const = default;
};

struct ChartSpec {
    enum class Kind { bar, line };

    Kind kind = Kind::bar;
    std::optional<QString> title;
    bool logScale = false;
    QList<ChartPoint> points; // 2 to 12
    bool operator==(const ChartSpec &) const = default;
};

struct MarketQuote {
    QString name;
    QString value;
    std::optional<QString> change;
    bool operator==(const MarketQuote &) const = default;
};

struct Market {
    QList<MarketQuote> quotes; // 1 to 10
    bool operator==(const Market &) const = default;
};

// Has a condition or a high.
struct WeatherInfo {
    std::optional<QString> location;
    std::optional<QString> condition;
    std::optional<QString> high;
    std::optional<QString> low;
    QList<Fact> details;
    bool operator==(const WeatherInfo &) const = default;
};

struct Divider {
    bool operator==(const Divider &) const = default;
};

using Block = std::variant<Paragraph, Heading, BulletList, NumberedList, Quote, Code, Table, Stats, Facts,
                           Comparison, Timeline, ChartSpec, Market, WeatherInfo, Divider>;
using Blocks = QList<Block>;

// The block's identity: its case and content in one text. Equal blocks have equal ones, and so a block that
// stands keeps its own while the reply grows below it.
[[nodiscard]] QString identity(const Block &block);

} // namespace MarkdownRenderer

} // namespace morvane
