#include "app/DisplayOpening.h"

#include "platform/linux/WaylandSession.h"
#include "utils/text/Product.h"

#include <QLoggingCategory>
#include <QStringList>

#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr const char *wayland = "WAYLAND_DISPLAY";
constexpr const char *x11 = "DISPLAY";

const std::string *silence = nullptr;

void giveUp(int)
{
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, silence->data(), silence->size());
    ::_exit(DisplayOpening::noDisplay);
}

// What a variable names, and that it names nothing.
QString placeOf(const char *variable)
{
    const QString place = qEnvironmentVariable(variable);
    return place.isEmpty() ? u"%1 is not set"_s.arg(QLatin1StringView(variable))
                           : u"%1 is “%2”"_s.arg(QLatin1StringView(variable), place);
}

QString line(const QString &reason)
{
    QString words = u"%1 found no display to open its window on: %2"_s.arg(Product::name, reason);
    return words.replace(u'\n', u' ') + u'\n'; // a variable may hold anything
}

// The list that Qt ends with; empty where it found none.
QStringList pluginsIn(const QString &lastWords)
{
    const QString head = u"plugins are: "_s;
    const qsizetype at = lastWords.indexOf(head);
    if (at < 0)
        return {};
    return lastWords.sliced(at + head.size()).remove(u'.').simplified().split(u", "_s);
}

} // namespace

DisplayOpening *DisplayOpening::s_current = nullptr;

DisplayOpening::DisplayOpening()
    : m_quiet(std::make_unique<WaylandSession::Quiet>())
    , m_silence(line(u"no answer came within %1 seconds (%2, %3)."_s.arg(patience).arg(placeOf(wayland),
                                                                                       placeOf(x11)))
                    .toStdString())
{
    s_current = this;
    silence = &m_silence;
    m_former = qInstallMessageHandler(&DisplayOpening::hear);
    std::signal(SIGALRM, giveUp);
    ::alarm(patience);
}

DisplayOpening::~DisplayOpening()
{
    ::alarm(0);
    std::signal(SIGALRM, SIG_DFL);
    qInstallMessageHandler(m_former);
    for (const Held &each : m_held)
        qt_message_output(each.type, {nullptr, 0, nullptr, each.category.c_str()}, each.words);
    silence = nullptr;
    s_current = nullptr;
}

QString DisplayOpening::reason(const QString &lastWords)
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return u"QT_QPA_PLATFORM asks for “%1”, which does not work here."_s.arg(
            qEnvironmentVariable("QT_QPA_PLATFORM"));
    const QStringList plugins = pluginsIn(lastWords);
    const bool hasWayland = qEnvironmentVariableIsSet(wayland);
    if (hasWayland && !plugins.contains("wayland"_L1))
        return u"this is a Wayland desktop, and Qt's plugin for it is not installed (the package qt6-wayland)."_s;
    if (!hasWayland && qEnvironmentVariableIsSet(x11) && !plugins.contains("xcb"_L1))
        return u"this is an X11 desktop, and Qt's plugin for it is not installed."_s;
    return u"nothing answers (%1, %2)."_s.arg(placeOf(wayland), placeOf(x11));
}

void DisplayOpening::hear(QtMsgType type, const QMessageLogContext &context, const QString &words)
{
    if (type == QtFatalMsg) {
        const std::string said = line(reason(words)).toStdString();
        std::fputs(said.c_str(), stderr);
        ::_exit(noDisplay); // nothing was begun that has to end
    }
    if (type != QtDebugMsg) // which only somebody who looks for a fault asks for
        s_current->m_held.push_back({type, context.category ? context.category : "default", words});
    else if (s_current->m_former)
        s_current->m_former(type, context, words);
}

} // namespace morvane
