#include "platform/linux/AutostartEntry.h"

#include "platform/linux/GLibHandles.h"
#include "utils/files/PrivateFile.h"
#include "utils/text/Product.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <gio/gdesktopappinfo.h>

#include <memory>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype largest = 1 << 16; // bytes
constexpr const char *group = "Desktop Entry";

struct FreeKeys {
    void operator()(GKeyFile *keys) const { g_key_file_unref(keys); }
};
using Keys = std::unique_ptr<GKeyFile, FreeKeys>;

struct FreeArguments {
    void operator()(char **arguments) const { g_strfreev(arguments); }
};

// One word of the entry's command line: these four mean something between its quotes, and a percent sign
// outside of them.
QString quoted(const QString &path)
{
    QString word;
    for (const QChar character : path) {
        if (u"\"`$\\"_s.contains(character))
            word += u'\\';
        word += character;
        if (character == u'%')
            word += u'%';
    }
    return u'"' + word + u'"';
}

} // namespace

AutostartEntry::AutostartEntry(const QString &folder, QString program, QObject *parent)
    : LoginStarting(parent)
    , m_folder(folder + u"/autostart"_s)
    , m_path(m_folder + u'/' + Product::desktopId + u".desktop"_s)
    , m_program(std::move(program))
{
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &AutostartEntry::changed);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &AutostartEntry::changed);
}

// A file is watched as well as its folder: an editor may write into it.
void AutostartEntry::watch()
{
    for (const QString &path : {m_folder, m_path}) {
        if (QFileInfo::exists(path) && !m_watcher.files().contains(path) &&
            !m_watcher.directories().contains(path))
            m_watcher.addPath(path);
    }
}

bool AutostartEntry::isOn()
{
    watch();
    std::optional<QByteArray> bytes;
    try {
        bytes = PrivateFile::read(m_path, largest);
    } catch (const FileError &) {
        return false;
    }
    const Keys keys(g_key_file_new());
    if (!bytes ||
        !g_key_file_load_from_data(keys.get(), bytes->constData(), bytes->size(), G_KEY_FILE_NONE, nullptr))
        return false;
    // What a program's settings for the session write when the person switches it off there.
    constexpr const char *enabled = "X-GNOME-Autostart-enabled";
    if (g_key_file_has_key(keys.get(), group, enabled, nullptr) &&
        !g_key_file_get_boolean(keys.get(), group, enabled, nullptr))
        return false;
    // Null also where the program that it names isn't there.
    const auto information = GLib::taken(g_desktop_app_info_new_from_keyfile(keys.get()));
    return information && !g_desktop_app_info_get_is_hidden(information.get()) &&
           g_desktop_app_info_get_show_in(information.get(), nullptr) &&
           startsUs(QString::fromUtf8(g_app_info_get_commandline(G_APP_INFO(information.get()))));
}

bool AutostartEntry::startsUs(const QString &commandLine) const
{
    char **words = nullptr;
    if (!g_shell_parse_argv(commandLine.toUtf8().constData(), nullptr, &words, nullptr))
        return false;
    const std::unique_ptr<char *, FreeArguments> arguments(words);
    const QString word = QString::fromUtf8(words[0]);
    const QString found = QStandardPaths::findExecutable(word);
    return !found.isEmpty() &&
           QFileInfo(found).canonicalFilePath() == QFileInfo(m_program).canonicalFilePath();
}

bool AutostartEntry::set(bool on)
{
    try {
        if (on)
            PrivateFile::write(m_path, entry());
        else if (QFileInfo::exists(m_path) && !QFile::remove(m_path))
            return false;
    } catch (const FileError &) {
        return false;
    }
    watch();
    return true;
}

QByteArray AutostartEntry::entry() const
{
    const Keys keys(g_key_file_new());
    const std::pair<const char *, QString> values[] = {
        {"Type", u"Application"_s},   {"Name", Product::name},
        {"Icon", Product::desktopId}, {"Exec", quoted(m_program) + u" --background"_s},
        {"TryExec", m_program}, // nothing happens once the program is removed
        {"StartupNotify", u"false"_s}};
    for (const auto &[key, value] : values)
        g_key_file_set_string(keys.get(), group, key, value.toUtf8().constData());
    const GLib::Text text(g_key_file_to_data(keys.get(), nullptr, nullptr));
    return text.get();
}

} // namespace morvane
