#pragma once

#include <QFlags>
#include <QList>
#include <QString>

namespace morvane {

// Text with formatted stretches. The text is what a reader sees and a voice speaks: no marks are left in it.
struct AttributedText {
    enum Format { Bold = 1, Italic = 2, Strikethrough = 4, Code = 8 };
    Q_DECLARE_FLAGS(Formats, Format)

    // Offsets are in UTF-16 units. Runs are in order, apart from each other and never empty; what no run
    // covers is plain.
    struct Run {
        qsizetype start = 0;
        qsizetype length = 0;
        Formats formats;
        QString link; // an encoded http or https address; empty for none

        bool operator==(const Run &) const = default;
    };

    QString text;
    QList<Run> runs;

    void append(QStringView piece, Formats formats = {}, const QString &link = {});

    bool operator==(const AttributedText &) const = default;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(AttributedText::Formats)

} // namespace morvane
