#include "app/RequestMessage.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace morvane {

namespace {

enum Field : char {
    begin = '^',
    hidden = '-',
    fresh = 'n',
    ghost = 'g',
    chatID = 'o',
    file = 'f',
    words = 'w',
    sends = 's',
    token = 't',
    end = '.',
};

void add(QByteArray &message, Field field, const QByteArray &value = {})
{
    message += static_cast<char>(field) + value;
    message += '\0';
}

} // namespace

QByteArray RequestMessage::of(const AppRequest &request)
{
    QByteArray message(1, '\0'); // ends what a killed sender left
    add(message, begin);
    if (!request.showsWindow)
        add(message, hidden);
    if (request.chat != AppRequest::Chat::open)
        add(message, request.chat == AppRequest::Chat::ghost ? ghost : fresh);
    if (!request.chatID.isEmpty())
        add(message, chatID, request.chatID.toUtf8());
    for (const QString &each : request.files)
        add(message, file, QFile::encodeName(each));
    if (!request.words.isEmpty())
        add(message, words, request.words.toUtf8());
    if (request.sends)
        add(message, sends);
    if (!request.activationToken.isEmpty())
        add(message, token, request.activationToken.toUtf8());
    add(message, end);
    return message;
}

std::vector<AppRequest> RequestMessage::read(QByteArrayView bytes)
{
    std::vector<AppRequest> requests;
    while (!bytes.isEmpty()) {
        const qsizetype zero = bytes.indexOf('\0');
        const QByteArrayView piece = zero < 0 ? bytes : bytes.first(zero);
        m_field += piece.first(std::min(piece.size(), largest + 1 - m_field.size()));
        if (zero < 0)
            break;
        bytes = bytes.sliced(zero + 1);
        if (takeField(std::exchange(m_field, {})))
            requests.push_back(std::exchange(m_request, {}));
    }
    return requests;
}

void RequestMessage::start(bool isGood)
{
    m_request = {};
    m_size = 0;
    m_hasBegun = isGood;
}

bool RequestMessage::takeField(QByteArrayView field)
{
    if (field.isEmpty())
        return false;
    m_size += field.size();
    if (m_size > largest)
        start(false);
    const QByteArray value = field.sliced(1).toByteArray();
    switch (static_cast<Field>(field.front())) {
    case begin:
        start(true);
        return false;
    case hidden:
        m_request.showsWindow = false;
        return false;
    case fresh:
        m_request.chat = AppRequest::Chat::fresh;
        return false;
    case ghost:
        m_request.chat = AppRequest::Chat::ghost;
        return false;
    case chatID:
        m_request.chatID = QString::fromUtf8(value);
        return false;
    case file:
        m_request.files += QFile::decodeName(value);
        return false;
    case words:
        m_request.words = QString::fromUtf8(value);
        return false;
    case sends:
        m_request.sends = true;
        return false;
    case token:
        m_request.activationToken = QString::fromUtf8(value);
        return false;
    case end:
        return std::exchange(m_hasBegun, false);
    }
    return false;
}

} // namespace morvane
