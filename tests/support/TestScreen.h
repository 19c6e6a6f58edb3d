#pragma once

#include <QProcess>
#include <QRect>
#include <QString>

#include <memory>
#include <vector>

namespace morvane {

// An X server of a test's own, with windows of known text on it.
class TestScreen {
public:
    explicit TestScreen(const QString &size = QStringLiteral("1600x900"));
    ~TestScreen();
    TestScreen(const TestScreen &) = delete;
    TestScreen &operator=(const TestScreen &) = delete;

    // Empty when no server could be started.
    [[nodiscard]] const QString &display() const { return m_display; }

    struct Words {
        QRect place;
        int pixels = 15;
        const char *ink = "black";
        const char *paper = "white";
        QString text;
        double scale = 1; // as the desktop's
    };
    // The number of its process, once the window is drawn.
    qint64 show(const Words &words);

    // Cuts the screen in displays, of which the last is the main one.
    void setDisplays(const std::vector<QRect> &displays) const;

private:
    static void end(QProcess &process);

    QProcess m_server;
    QString m_display;
    std::vector<std::unique_ptr<QProcess>> m_windows;
};

} // namespace morvane
