#include "support/TestData.h"

#include <QFile>

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>

namespace morvane {

namespace {

constexpr std::array<std::pair<const char *, const char *>, 3> marks{{{"⏎", "\n"}, {"⇥", "\t"}, {"␣", " "}}};

QByteArray meant(QByteArray line)
{
    line.replace("␀", "");
    for (const auto &[mark, character] : marks)
        line.replace(mark, character);
    const QByteArray opening("⟦");
    for (qsizetype at = line.indexOf(opening); at >= 0; at = line.indexOf(opening, at))
        line.replace(at, opening.size() + 2 + 3, QByteArray::fromHex(line.mid(at + opening.size(), 2)));
    return line;
}

QByteArray shown(const QString &outcome)
{
    return outcome.isEmpty() ? QByteArray("␀") : outcome.toUtf8().replace('\n', "⏎").replace('\t', "⇥");
}

} // namespace

QString TestData::pathOf(const char *path)
{
    return QStringLiteral(MORVANE_TEST_DATA "/") + QString::fromUtf8(path);
}

QByteArray TestData::read(const char *path)
{
    QFile file(pathOf(path));
    if (!file.open(QFile::ReadOnly))
        throw std::runtime_error(std::string("no such test data: ") + path);
    return file.readAll();
}

std::string TestData::text(const char *path)
{
    return read(path).toStdString();
}

QByteArrayList TestData::lines(const char *path)
{
    QByteArrayList all;
    for (const QByteArray &line : read(path).trimmed().split('\n')) {
        if (!line.isEmpty() && !line.startsWith("# "))
            all.append(meant(line));
    }
    return all;
}

std::string TestData::transcript(const char *path,
                                 const std::function<QString(const QByteArray &input)> &outcome)
{
    QByteArray all;
    for (const QByteArray &line : read(path).trimmed().split('\n')) {
        if (line.startsWith("    "))
            continue;
        all += line + '\n';
        if (!line.isEmpty() && !line.startsWith("# "))
            all += "    " + shown(outcome(meant(line))) + '\n';
    }
    return all.toStdString();
}

void TestData::expect(const char *path, const std::function<QString(const QByteArray &input)> &outcome)
{
    EXPECT_EQ(transcript(path, outcome), text(path));
}

} // namespace morvane
