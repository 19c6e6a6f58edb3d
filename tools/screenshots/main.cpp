#include "Studio.h"

#include "app/WindowEngine.h"
#include "persistence/SettingsStore.h"
#include "security/LocalDataVault.h"
#include "support/WindowDriver.h"
#include "utils/files/PrivateFile.h"
#include "view_models/ShellViewModel.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/companion/CompanionViewModel.h"
#include "view_models/settings/AppLockViewModel.h"

#include <QFile>
#include <QGuiApplication>
#include <QQuickStyle>
#include <QTemporaryDir>
#include <QUrl>
#include <QtQml/QQmlExtensionPlugin>

#include <cstdio>

Q_IMPORT_QML_PLUGIN(MorvanePlugin)

using namespace morvane;
using namespace Qt::StringLiterals;

// Takes the pictures of the documentation:
//
//   morvane-screenshots FOLDER light|dark [SUFFIX]
//
// Each scene is the real application, driven as a person would, on the practice server.

namespace {

// The ghost in each of its states, in a window of its own.
void takeGhost(Studio &studio, bool dark)
{
    SystemClock time;
    std::vector<std::unique_ptr<CompanionViewModel>> companions;
    QObjectList states;
    for (int i = 0; i <= static_cast<int>(CompanionState::error); ++i) {
        companions.push_back(std::make_unique<CompanionViewModel>(time));
        companions.back()->transition(static_cast<CompanionState>(i));
        states += companions.back().get();
    }
    WindowEngine engine;
    engine.setInitialProperties({{u"companions"_s, QVariant::fromValue(states)}, {u"dark"_s, dark}});
    engine.load(QUrl(u"qrc:/scenes/GhostStates.qml"_s));
    auto *window = qobject_cast<QQuickWindow *>(engine.rootObjects().value(0));
    if (!window)
        throw std::runtime_error("the ghost's window did not load");
    window->show();
    studio.take(u"ghost"_s, window);
}

// The gallery appearance, on each of its backdrops.
void takeGallery(Studio &studio)
{
    SettingsStore &settings = *studio.state().storage().settings;
    settings.setAppearance(AppAppearance::gallery);
    for (const QString &backdrop : ShellViewModel::backdrops()) {
        settings.setGalleryBackdrop(backdrop);
        studio.take(u"gallery-"_s + backdrop);
    }
}

// Turns on their way: streaming, an approval, a saved note, an error.
void takeTurns(Studio &studio)
{
    studio.beginChat(u"practice"_s);
    studio.say(u"What happens to the words I type here?"_s);
    studio.awaitText(u"No model"_s);
    studio.take(u"streaming"_s);
    studio.state().presentation().chat->stopResponding();
    studio.awaitReply();

    studio.beginChat(u"agent-search"_s);
    studio.say(u"Which ferns grow in deep shade?"_s);
    studio.awaitApproval();
    studio.take(u"approval"_s);
    studio.state().presentation().chat->approve();
    studio.awaitReply();
    studio.take(u"abilities"_s);

    studio.beginChat(u"status-503"_s);
    studio.say(u"Are you there?"_s);
    studio.awaitReply();
    studio.take(u"error"_s);
    studio.state().presentation().chat->dismissBanner();
}

// What goes along with a message, and a chat that is kept nowhere.
void takeGhostChat(Studio &studio)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"Letter to the landlord.md"_s);
    PrivateFile::write(file, "# Letter\n\nThe heating has been off since Monday.\n");
    studio.beginChat(u"practice-fast"_s);
    ChatViewModel &chat = *studio.state().presentation().chat;
    chat.ghosts()->newGhostChat();
    studio.say(u"Is this written down anywhere?"_s);
    studio.awaitReply();
    AttachmentDesk &desk = *chat.entries()->attachments();
    desk.attach({QUrl::fromLocalFile(file)});
    if (!WindowDriver::eventually([&desk] { return desk.state() == AttachmentDesk::State::Ready; }))
        throw std::runtime_error("the document was not read");
    studio.take(u"ghost-chat"_s);
    desk.clear();
    chat.ghosts()->dropGhost();
}

void takeCurtain(Studio &studio)
{
    Storage &storage = studio.state().storage();
    storage.vault->moveKey(UserPresence::Required); // nobody can be asked here
    storage.settings->setAppLockEnabled(true);
    AppLockViewModel &lock = *studio.state().presentation().lock;
    lock.lock();
    studio.take(u"locked"_s);
    lock.unlock();
    if (!WindowDriver::eventually([&lock] { return !lock.isLocked(); }))
        throw std::runtime_error("the lock did not open");
}

QString answerNamed(const QString &name)
{
    QFile file(u":/scenes/answers/"_s + name + u".md"_s);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("an answer is missing");
    return QString::fromUtf8(file.readAll());
}

void takeAnswers(Studio &studio)
{
    const std::pair<QString, QString> answers[] = {
        {u"technical"_s, u"How does a sealed store survive a crash?"_s},
        {u"cards"_s, u"Sum up the house on Elm Street"_s},
        {u"charts"_s, u"How did prices develop?"_s},
        {u"boards"_s, u"Markets and weather, please"_s}};
    studio.beginChat(u"llama3.2:3b"_s); // only its name is shown
    for (const auto &[name, question] : answers) {
        studio.openChat(question, answerNamed(name));
        studio.take(u"answer-"_s + name);
    }
}

void takeSourceMenu(Studio &studio)
{
    WindowDriver::click(WindowDriver::item(studio.window(), u"sourceButton"_s));
    studio.take(u"sources"_s);
    WindowDriver::press(studio.window(), Qt::Key_Escape);
}

void takeSettings(Studio &studio)
{
    QQuickWindow *settings = WindowDriver::settingsWindow(studio.window());
    if (!settings)
        throw std::runtime_error("the settings did not open");
    for (const QString &page : settings->property("pages").toStringList()) {
        settings->setProperty("page", page);
        studio.take(u"settings-"_s + page, settings);
    }
    settings->close();
}

void takeAll(Studio &studio)
{
    studio.take(u"first-start"_s);
    studio.beginChat(u"practice-fast"_s);
    studio.take(u"empty"_s);
    studio.say(u"What happens to the words I type here?"_s);
    studio.awaitReply();
    studio.take(u"chat"_s);
    takeAnswers(studio);
    takeTurns(studio);
    takeSourceMenu(studio);
    takeSettings(studio);
    takeGhostChat(studio);
    takeCurtain(studio);
    takeGallery(studio);
}

} // namespace

int main(int argc, char **argv)
{
    QQuickStyle::setStyle(u"Basic"_s);
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() < 3) {
        std::fprintf(stderr, "usage: morvane-screenshots FOLDER light|dark [SUFFIX]\n");
        return 2;
    }
    try {
        Studio studio(arguments[1], u"-"_s + arguments[2] + arguments.value(3), arguments[2] == u"dark"_s);
        takeAll(studio);
        takeGhost(studio, arguments[2] == u"dark"_s);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
