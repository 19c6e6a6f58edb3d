#include "app/PracticeTour.h"

#include "app/Presentation.h"
#include "app/Storage.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/SettingsStore.h"
#include "view_models/sidebar/ConversationListModel.h"

#include <QDateTime>

#include <algorithm>
#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Sample {
    QString title;
    QString question;
    QString answer;
};

const std::array<Sample, 2> &samples()
{
    static const std::array<Sample, 2> all{
        Sample{u"Practice: the ghost in the corner"_s, u"Who are you?"_s,
               u"A **practice** answer, prepared for this tour; no model wrote it.\n\n- The ghost shows what "
               u"the "
               u"program does: it listens, thinks, works, and sleeps while the window is locked.\n- *New "
               u"Ghost chat* "
               u"(Ctrl+Shift+N) opens a chat that is held in memory alone.\n- Ctrl+? lists every "
               u"key.\n\nThis chat is "
               u"kept, sealed, in the profile of the demo. Delete it from its menu, and bring it back."_s},
        Sample{
            u"Practice: a week of ferns"_s, u"How much water did the ferns take?"_s,
            u"A **practice** answer with made-up figures.\n\n```chart\ntype: line\ntitle: Litres a day (made "
            u"up)\nMon | 2\nTue | 3\nWed | 2\nThu | 4\nFri | 3\nSat | 5\nSun | 4\n```\n\nFind a word of it "
            u"with Ctrl+F, or in all chats with Ctrl+K."_s}};
    return all;
}

void add(ConversationRepository &repository, const Sample &sample, const QDateTime &time)
{
    const auto chat = repository.create();
    const auto message = [&](MessageRole role, const QString &text) {
        return repository.makeMessage({.id = QUuid::createUuid(),
                                       .role = role,
                                       .content = text,
                                       .createdAt = time,
                                       .status = MessageStatus::delivered});
    };
    repository.add(
        {message(MessageRole::user, sample.question), message(MessageRole::assistant, sample.answer)}, *chat);
    repository.rename(*chat, sample.title);
}

bool isUntouched(const ConversationRepository &repository)
{
    const auto chats = repository.all();
    return std::all_of(chats.begin(), chats.end(), [](const auto &chat) { return chat->messages().empty(); });
}

} // namespace

void PracticeTour::begin(Storage &storage, Presentation &presentation)
{
    storage.settings->setModel(u"practice-tour"_s);
    if (!isUntouched(*storage.repository))
        return;
    const QDateTime yesterday = QDateTime::currentDateTimeUtc().addDays(-1);
    for (const Sample &sample : samples())
        add(*storage.repository, sample, yesterday);
    presentation.conversations->refresh();
}

} // namespace morvane
