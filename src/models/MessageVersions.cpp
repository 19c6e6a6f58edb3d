#include "models/MessageVersions.h"

#include <algorithm>
#include <map>
#include <set>

namespace morvane {

namespace {

using Messages = Conversation::Messages;

bool isOneOf(const ChatMessage &message, const std::optional<QUuid> &group)
{
    return group && message.versionGroup() == group;
}

bool isQuestion(const ChatMessage &message)
{
    return message.role() == MessageRole::user;
}

// The question that each message answers, by message. Rows from before it was kept answer the one above.
std::map<QUuid, QUuid> answeredQuestions(const Messages &messages)
{
    std::map<QUuid, QUuid> questions;
    QUuid above;
    for (const auto &message : messages) {
        if (isQuestion(*message))
            above = message->id();
        else
            questions[message->id()] = message->answers().value_or(above);
    }
    return questions;
}

} // namespace

Messages MessageVersions::of(const Conversation &conversation, const ChatMessage &message)
{
    Messages versions = conversation.messages();
    std::erase_if(versions, [&](const auto &other) {
        return other->id() != message.id() && !isOneOf(*other, message.versionGroup());
    });
    return versions;
}

QUuid MessageVersions::groupOf(ChatMessage &message)
{
    if (!message.versionGroup())
        message.setVersionGroup(QUuid::createUuid());
    return *message.versionGroup();
}

void MessageVersions::choose(const Conversation &conversation, const ChatMessage &reply)
{
    const Messages messages = conversation.orderedMessages();
    const auto questions = answeredQuestions(messages);
    const auto found = questions.find(reply.id());
    const QUuid question = found == questions.end() ? QUuid() : found->second;
    const auto asked = std::ranges::find(messages, question, &ChatMessage::id);
    const auto group = asked == messages.end() ? std::nullopt : (*asked)->versionGroup();
    std::set<QUuid> variants; // of the question
    for (const auto &message : messages) {
        if (isOneOf(*message, group))
            variants.insert(message->id());
    }
    for (const auto &message : messages) {
        const auto answered = questions.find(message->id());
        if (isOneOf(*message, reply.versionGroup()))
            message->setSetAside(message->id() != reply.id());
        else if (variants.contains(message->id()))
            message->setSetAside(message->id() != question);
        else if (answered != questions.end() && variants.contains(answered->second))
            message->setSetAside(answered->second != question);
    }
}

Messages MessageVersions::standingWith(const Conversation &conversation, const ChatMessage &message)
{
    Messages messages = conversation.orderedMessages();
    const auto questions = answeredQuestions(messages);
    std::set<QUuid> going;
    for (const auto &version : of(conversation, message))
        going.insert(version->id());
    if (!isQuestion(message)) {
        for (const auto &other : messages) { // questions that nothing shows any more
            const bool isUnseen = isQuestion(*other) && other->isSetAside();
            if (isUnseen && std::ranges::any_of(going, [&](const QUuid &id) {
                    const auto answered = questions.find(id);
                    return answered != questions.end() && answered->second == other->id();
                }))
                going.insert(other->id());
        }
    }
    for (const auto &[answer, question] : questions) {
        if (going.contains(question))
            going.insert(answer);
    }
    std::erase_if(messages, [&](const auto &each) { return !going.contains(each->id()); });
    return messages;
}

} // namespace morvane
