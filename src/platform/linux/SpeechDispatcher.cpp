#include "platform/linux/SpeechDispatcher.h"

#include "audio/AudioError.h"
#include "audio/SpeechSentences.h"
#include "utils/text/Product.h"

#include <QLocale>

#include <libspeechd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <set>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// "speechd:LANGUAGE:NAME"
constexpr QLatin1StringView prefix{"speechd:"};
constexpr int fullRate = 100;
// A piece at the slowest rate takes a minute. What has no words for a voice may end without a word of it.
constexpr auto longestPiece = 2min;

// The library's callbacks tell the connection by a number alone.
class Ends {
public:
    static Ends &all()
    {
        static Ends ends;
        return ends;
    }
    void note(std::size_t client, std::size_t message)
    {
        const std::lock_guard lock(m_mutex);
        m_ended[client].insert(message);
        m_changed.notify_all();
    }
    void forget(std::size_t client)
    {
        const std::lock_guard lock(m_mutex);
        m_ended.erase(client);
    }
    // False when it wasn't heard to its end.
    bool await(std::size_t client, std::size_t message, const std::stop_token &stop)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, stop, longestPiece,
                                  [&] { return m_ended[client].contains(message); });
    }

private:
    std::mutex m_mutex;
    std::condition_variable_any m_changed;
    std::map<std::size_t, std::set<std::size_t>> m_ended; // messages by client; guarded by m_mutex
};

void noteEnd(std::size_t message, std::size_t client, SPDNotificationType)
{
    Ends::all().note(client, message);
}

class Connection {
public:
    explicit Connection(SPDConnectionMode mode)
        : m_connection(spd_open2(Product::name.data(), nullptr, nullptr, mode, nullptr, 1, nullptr))
    {
        if (m_connection && mode == SPD_MODE_THREADED) {
            m_connection->callback_end = noteEnd;
            m_connection->callback_cancel = noteEnd;
            m_client = static_cast<std::size_t>(spd_get_client_id(m_connection));
            spd_set_notification_on(m_connection, SPD_END);
            spd_set_notification_on(m_connection, SPD_CANCEL);
        }
    }
    ~Connection()
    {
        if (m_connection)
            spd_close(m_connection);
        Ends::all().forget(m_client);
    }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    [[nodiscard]] bool isOpen() const { return m_connection != nullptr; }
    [[nodiscard]] std::vector<SpeechSynthesizing::Voice> voices() const;
    bool choose(const QString &identifier) const;
    void setRate(double rate) const
    {
        spd_set_voice_rate(m_connection, static_cast<int>(std::clamp(rate, -1.0, 1.0) * fullRate));
    }
    // False when it breaks off.
    bool say(const QByteArray &words, const std::stop_token &stop) const;

private:
    SPDConnection *m_connection;
    std::size_t m_client = 0;
};

// Each voice of the synthesizer has many colours, which are left out.
std::vector<SpeechSynthesizing::Voice> Connection::voices() const
{
    const std::unique_ptr<SPDVoice *, decltype(&free_spd_voices)> list(
        spd_list_synthesis_voices(m_connection), free_spd_voices);
    std::vector<SpeechSynthesizing::Voice> all;
    for (SPDVoice **each = list.get(); each && *each; ++each) {
        const QString name = QString::fromUtf8((*each)->name);
        const QString language = QString::fromUtf8((*each)->language);
        if (name.contains(u'+') || language.contains(u':'))
            continue;
        all.push_back(
            {prefix + language + u':' + name, u"%1 (%2)"_s.arg(QString(name).replace(u'_', u' '), language)});
    }
    return all;
}

bool Connection::choose(const QString &identifier) const
{
    const auto all = voices();
    if (std::ranges::find(all, identifier, &SpeechSynthesizing::Voice::identifier) == all.end())
        return false;
    const QString rest = identifier.sliced(prefix.size());
    const qsizetype cut = rest.indexOf(u':');
    return spd_set_language(m_connection, rest.first(cut).toUtf8().constData()) == 0 &&
           spd_set_synthesis_voice(m_connection, rest.sliced(cut + 1).toUtf8().constData()) == 0;
}

bool Connection::say(const QByteArray &words, const std::stop_token &stop) const
{
    const int message = spd_say(m_connection, SPD_TEXT, words.constData());
    if (message < 0)
        return false;
    if (!Ends::all().await(m_client, static_cast<std::size_t>(message), stop))
        spd_cancel(m_connection);
    return true;
}

// Line ends and other control characters are the protocol's.
QByteArray plain(QStringView piece)
{
    QString text = piece.toString();
    for (QChar &c : text)
        if (c.category() == QChar::Other_Control)
            c = u' ';
    return text.toUtf8();
}

// The person's own language first, then English.
int placeOf(const SpeechSynthesizing::Voice &voice)
{
    const QString language = voice.identifier.section(u':', 1, 1);
    const auto isOf = [&](const QString &code) {
        return language == code || language.startsWith(code + u'-');
    };
    if (isOf(QLocale::languageToCode(QLocale().language())))
        return 0;
    return isOf(u"en"_s) ? 1 : 2;
}

} // namespace

bool SpeechDispatcher::owns(const QString &identifier) const
{
    return identifier.startsWith(prefix);
}

std::vector<SpeechSynthesizing::Voice> SpeechDispatcher::voices()
{
    const Connection connection(SPD_MODE_SINGLE);
    if (!connection.isOpen())
        return {};
    auto all = connection.voices();
    std::ranges::stable_sort(all, {}, placeOf);
    return all;
}

bool SpeechDispatcher::speak(const SpeechSynthesizing::Utterance &utterance, const std::stop_token &stop)
{
    const Connection connection(SPD_MODE_THREADED);
    if (!connection.isOpen() || !connection.choose(utterance.voice))
        return false;
    connection.setRate(utterance.rate);
    SpeechSentences sentences(utterance.text);
    for (QStringView piece = sentences.next(); !piece.isEmpty() && !stop.stop_requested();
         piece = sentences.next()) {
        if (!connection.say(plain(piece), stop))
            throw AudioError(AudioError::Case::playbackFailed);
    }
    return true;
}

} // namespace morvane
