#pragma once

#include "ai/contract/AIMessage.h"
#include "network/EgressTypes.h"

#include <QString>

#include <map>
#include <memory>
#include <set>
#include <vector>

class QUrl;

namespace morvane {

// What the calls of one turn share: who is there to answer, what the person typed, and what the turn has
// taken in from outside. A flag that one call sets binds the calls behind it. GUI thread.
struct TurnContext {
    enum class Attendance { attended, unattended };
    enum class Notes { kept, notKept };

    // A turn about which nothing is known: nobody answers, and nothing is kept.
    TurnContext() = default;

    // The start of a person's turn. `words` are what the person wrote in it, never what came along with them:
    // an address in an attached document is not one that the person typed.
    [[nodiscard]] static std::shared_ptr<TurnContext> begin(Attendance attendance,
                                                            std::optional<QString> chatID, Notes notes,
                                                            const QString &words,
                                                            const std::vector<AIMessage> &messages);

    // An address that the turn has seen.
    void note(const QUrl &url);

    bool unattended = true; // nobody can answer an approval
    std::optional<QString> chatID;
    bool memoryAllowed = false;
    // An address that counts as typed, as the person typed it; any other as it is. Servers tell letters apart
    // that normalising takes for the same, and a model's choice of them could carry something out.
    [[nodiscard]] QString spellingOf(const QString &address) const;

    std::set<QString> knownURLs;  // normalised; typed by the person or found by a search
    std::set<QString> knownHosts; // of the same
    std::set<QString> typedURLs;
    bool webContentConsumed = false;
    bool outsideContentInContext = false; // something that the person didn't write
    bool sensitiveDataInContext = false;  // a document, an image or the screen
    SensitiveDataSet takenIn;             // by calls of this turn; goes out with every later request
    int rememberCalls = 0;                // refused ones included
    std::set<QString> approvedOnce;       // names of tools

private:
    std::map<QString, QString> m_typed; // spellings by normalised address

    void noteLinks(const QString &text);
    void mark(const std::vector<AIMessage> &messages);
};

} // namespace morvane
