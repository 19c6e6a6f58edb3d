#pragma once

#include "async/TaskHandle.h"
#include "security/Passphrase.h"
#include "utils/bytes/Argon2id.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>

#include <functional>

namespace morvane {

class AnswerPause;
class LocalDataVault;
class Work;

// The choice to keep the data key under a passphrase of the person's: setting it, changing it, doing without.
// GUI thread.
class PassphraseService final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        LocalDataVault &vault;
        AnswerPause &pause;
        Work &work;
        bool isSet = false; // as the keychain's item was found at the start
        std::function<Argon2id::Cost()> cost = Argon2id::measured;
    };

    // All outlive this object, and what it has begun ends with the work.
    explicit PassphraseService(Parts parts, QObject *parent = nullptr);
    ~PassphraseService() override;

    [[nodiscard]] bool isSet() const { return m_isSet; }
    [[nodiscard]] bool isChanging() const { return m_isChanging; }
    [[nodiscard]] const QString &message() const { return m_message; } // of the latest change; empty for none

    // Tries `former` where one is set, and puts the key under `chosen`, or under none where that is empty.
    // changed() follows, and isSetChanged() where that did. Nothing while it works already, or while a wrong
    // answer's pause lasts.
    void change(const Passphrase &former, const Passphrase &chosen);

    // What an attempt to unlock found in the keychain.
    void found(bool isSet);
    void setMessage(const QString &message);

Q_SIGNALS:
    void changed();
    void isSetChanged();

private:
    enum class Outcome { Done, WrongPassphrase, TooLittleMemory, Failed };
    struct Step {
        Passphrase former;
        Passphrase chosen;
        bool checksFormer = false;
    };

    [[nodiscard]] static Outcome take(LocalDataVault &vault, const Step &step,
                                      const std::function<Argon2id::Cost()> &cost);
    static QCoro::Task<> run(QPointer<PassphraseService> self, Step step, std::stop_token stop);
    void finish(Outcome outcome, bool isSet);

    Parts m_parts;
    bool m_isSet;
    bool m_isChanging = false;
    QString m_message;
    TaskHandle m_task;
};

} // namespace morvane
