#pragma once

#include <QString>
#include <QStringList>
#include <QUuid>

#include <cstdint>
#include <map>

namespace morvane {

class ChatMessage;

// What the sealed fields of a chat's messages hold: each message is opened once and kept until its record
// changes. GUI thread.
class OpenedMessages {
public:
    struct Texts {
        QString text;     // of a reply what it answers
        QString thinking; // what the model thought before that; empty while it still does
        QString error;    // empty for none
        QString attachmentName;
        QStringList toolLines;
        QStringList toolStates;
    };

    // Valid until the record changes or is forgotten.
    [[nodiscard]] const Texts &of(const ChatMessage &message);
    void forget() { m_opened.clear(); }

private:
    struct Opened {
        std::uint64_t revision = 0; // of the record that was opened
        Texts texts;
    };
    std::map<QUuid, Opened> m_opened;
};

} // namespace morvane
