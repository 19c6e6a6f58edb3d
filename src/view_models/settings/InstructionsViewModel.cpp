#include "view_models/settings/InstructionsViewModel.h"

#include "ai/prompts/SystemPrompt.h"
#include "ai/prompts/SystemPromptStore.h"

namespace morvane {

InstructionsViewModel::InstructionsViewModel(SystemPromptStore &store, QObject *parent)
    : QObject(parent)
    , m_store(store)
{
    connect(&store, &SystemPromptStore::promptChanged, this, &InstructionsViewModel::textChanged);
    connect(&store, &SystemPromptStore::loadFailedChanged, this, &InstructionsViewModel::problemChanged);
}

QString InstructionsViewModel::text() const
{
    return m_store.prompt();
}

void InstructionsViewModel::setText(const QString &text)
{
    m_store.setPrompt(text);
}

QString InstructionsViewModel::defaultText()
{
    return SystemPrompt::defaultPrompt();
}

QString InstructionsViewModel::problem() const
{
    return m_store.loadFailed() ? SystemPromptStore::loadFailedMessage() : QString();
}

void InstructionsViewModel::reset()
{
    m_store.reset();
}

} // namespace morvane
