#pragma once

#include <QByteArrayList>
#include <QString>

#include <functional>
#include <string>

namespace morvane {

// Files of tests/data. A table is compared with its file as a whole, so that a changed word shows as a
// changed line.
namespace TestData {

// Where the file lies.
[[nodiscard]] QString pathOf(const char *path);

// Throws when there is no such file.
[[nodiscard]] QByteArray read(const char *path);
[[nodiscard]] std::string text(const char *path);

// The lines of a file but for comments, as they are meant (see below).
[[nodiscard]] QByteArrayList lines(const char *path);

// A transcript holds inputs, a line each, and below each input, indented, what comes of it. This is the
// file's transcript with the outcomes as they are now; it equals text(path) when all is well.
//
// Lines that are empty or begin with "# " are left alone. ⏎, ⇥ and ␣ stand for a line feed, a tab and a
// blank, ␀ for no character at all, and ⟦ff⟧ for the byte of that number.
[[nodiscard]] std::string transcript(const char *path,
                                     const std::function<QString(const QByteArray &input)> &outcome);

// It equals.
void expect(const char *path, const std::function<QString(const QByteArray &input)> &outcome);

} // namespace TestData

} // namespace morvane
