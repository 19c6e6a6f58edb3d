#include "Hour.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QQuickStyle>
#include <QtQml/QQmlExtensionPlugin>

#include <cstdio>
#include <stdexcept>

Q_IMPORT_QML_PLUGIN(MorvanePlugin)

using namespace morvane;
using namespace Qt::StringLiterals;

// Drives the real window on the practice server by keys and pointer of the X server that it is shown on;
// script/drive starts one.

namespace {

void drive(const QCommandLineParser &options)
{
    Watch watch;
    {
        Studio studio(options.value(u"pictures"_s), u"-"_s + options.value(u"suffix"_s),
                      options.isSet(u"dark"_s));
        Hour hour(studio, watch);
        if (options.isSet(u"first-start"_s))
            hour.lookAtFirstStart();
        else if (options.isSet(u"pictures"_s))
            hour.takePictures();
        else
            hour.use(options.value(u"rounds"_s).toInt());
    }
    if (!watch.complaints().isEmpty())
        throw std::runtime_error("after the end: " + watch.complaints().join(u'\n').toStdString());
    std::printf("longest wait %lld ms\n", static_cast<long long>(watch.longestWait().count()));
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    QQuickStyle::setStyle(u"Basic"_s);
    const QGuiApplication application(argc, argv);
    QCommandLineParser options;
    options.addHelpOption();
    options.addOptions({{u"pictures"_s, u"Take pictures into this folder instead."_s, u"folder"_s},
                        {u"suffix"_s, u"Part of each picture's name."_s, u"words"_s, u"light"_s},
                        {u"dark"_s, u"In the dark appearance."_s},
                        {u"rounds"_s, u"How often everything is done."_s, u"number"_s, u"2"_s},
                        {u"first-start"_s, u"Only look at the first window on this screen."_s}});
    options.process(application);
    try {
        drive(options);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
