// known_window X Y WIDTH HEIGHT PIXELS INK PAPER TEXT: a window of known text on an X server, for
// tests that look at its screen. Says "shown" once it is drawn.

#include <QGuiApplication>
#include <QPainter>
#include <QRasterWindow>

#include <cstdio>

namespace {

class KnownWindow final : public QRasterWindow {
public:
    explicit KnownWindow(const QStringList &words)
        : m_words(words)
    {}

private:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        const QRect all(0, 0, width(), height());
        QFont font(QStringLiteral("Noto Sans"));
        font.setPixelSize(m_words.at(5).toInt());
        painter.fillRect(all, QColor(m_words.at(7)));
        painter.setFont(font);
        painter.setPen(QColor(m_words.at(6)));
        painter.drawText(all.adjusted(12, 12, -12, -12), Qt::TextWordWrap, m_words.at(8));
        painter.end();
        std::puts("shown");
        std::fflush(stdout);
    }

    QStringList m_words;
};

} // namespace

int main(int argc, char **argv)
{
    const QGuiApplication application(argc, argv);
    const QStringList words = QGuiApplication::arguments();
    if (words.size() < 9)
        return 2;
    KnownWindow window(words);
    window.setGeometry(words.at(1).toInt(), words.at(2).toInt(), words.at(3).toInt(), words.at(4).toInt());
    window.show();
    return QGuiApplication::exec();
}
