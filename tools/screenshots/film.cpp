#include "Film.h"
#include "Studio.h"

#include "app/PracticeTour.h"
#include "persistence/SettingsStore.h"
#include "support/WindowDriver.h"
#include "view_models/chat/ChatViewModel.h"

#include <QGuiApplication>
#include <QQuickStyle>
#include <QTest>
#include <QtQml/QQmlExtensionPlugin>

#include <cstdio>
#include <stdexcept>

Q_IMPORT_QML_PLUGIN(MorvanePlugin)

using namespace morvane;
using namespace Qt::StringLiterals;

// Takes the frames of the documentation's film: the first minute of the demo, in the real window.
//
//   morvane-film FOLDER light|dark
//
// script/film makes one picture of them.

namespace {

constexpr int betweenFrames = 160; // milliseconds, while something moves
constexpr int reading = 2200;      // and while a person looks
constexpr int glance = 900;

// A suggestion of a chat that is empty, and the press of Return.
void choose(Studio &studio, Film &film, int suggestion)
{
    film.take(glance);
    QList<QQuickItem *> suggestions;
    for (QQuickItem *item : WindowDriver::allItems(studio.window())) {
        if (item->objectName() == u"suggestion"_s)
            suggestions += item;
    }
    WindowDriver::click(suggestions.at(suggestion));
    WindowDriver::settle();
    film.take(glance);
    WindowDriver::press(studio.window(), Qt::Key_Return);
}

void watchReply(Studio &studio, Film &film)
{
    ChatViewModel &chat = *studio.state().presentation().chat;
    for (int frame = 0; chat.turnsInFlight() > 0 && !chat.hasApproval(); ++frame) {
        if (frame > 200)
            throw std::runtime_error("the reply never ended");
        film.take(betweenFrames);
        QTest::qWait(betweenFrames);
    }
    if (chat.hasBanner())
        throw std::runtime_error("the reply failed");
    Studio::awaitParts(studio.window());
    film.take(reading);
}

void beginChat(Studio &studio)
{
    studio.state().presentation().chat->newConversation();
    WindowDriver::settle();
}

void play(Studio &studio, Film &film)
{
    choose(studio, film, 0); // what an answer can look like
    watchReply(studio, film);
    beginChat(studio);
    choose(studio, film, 2); // a search, which asks first
    watchReply(studio, film);
    studio.state().presentation().chat->approve();
    watchReply(studio, film);
    beginChat(studio);
    choose(studio, film, 1); // a note, with its undo
    watchReply(studio, film);
}

} // namespace

int main(int argc, char **argv)
{
    QQuickStyle::setStyle(u"Basic"_s);
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() < 3) {
        std::fprintf(stderr, "usage: morvane-film FOLDER light|dark\n");
        return 2;
    }
    try {
        Studio studio(arguments[1], {}, arguments[2] == u"dark"_s);
        studio.state().storage().settings->setBaseURLString(studio.server().baseUrl());
        PracticeTour::begin(studio.state().storage(), studio.state().presentation());
        studio.window()->resize(840, 600);
        WindowDriver::settle();
        Film film(*studio.window(), arguments[1]);
        play(studio, film);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
