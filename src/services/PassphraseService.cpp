#include "services/PassphraseService.h"

#include "async/CancelledError.h"
#include "async/Work.h"
#include "security/LocalDataVault.h"
#include "services/AnswerPause.h"
#include "utils/log/Log.h"
#include "utils/text/DesktopWords.h"
#include "utils/text/Product.h"

#include <new>
#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

PassphraseService::PassphraseService(Parts parts, QObject *parent)
    : QObject(parent)
    , m_parts(std::move(parts))
    , m_isSet(m_parts.isSet)
{}

PassphraseService::~PassphraseService() = default;

void PassphraseService::change(const Passphrase &former, const Passphrase &chosen)
{
    if (m_isChanging || m_parts.pause.left() > 0s)
        return;
    m_isChanging = true;
    m_message.clear();
    const Step step{former, chosen, m_isSet};
    m_task = TaskHandle::start(
        [this, step](std::stop_token stop) { return run(QPointer(this), step, std::move(stop)); });
    Q_EMIT changed();
}

// Off the GUI thread.
PassphraseService::Outcome PassphraseService::take(LocalDataVault &vault, const Step &step,
                                                   const std::function<Argon2id::Cost()> &cost)
{
    try {
        if (step.checksFormer && !vault.unwrapKey(step.former))
            return Outcome::WrongPassphrase;
        if (step.chosen.isEmpty())
            vault.bareKey();
        else
            vault.wrapKey(step.chosen, cost());
        return Outcome::Done;
    } catch (const std::bad_alloc &) {
        return Outcome::TooLittleMemory;
    } catch (const std::exception &error) {
        Log::error(Log::Category::App, "The passphrase of the data key could not be changed: %s"_L1,
                   {QString::fromUtf8(error.what())});
        return Outcome::Failed;
    }
}

QCoro::Task<> PassphraseService::run(QPointer<PassphraseService> self, Step step, std::stop_token stop)
{
    const bool isSet = !step.chosen.isEmpty();
    const auto taking = [&vault = self->m_parts.vault, cost = self->m_parts.cost, step] {
        return take(vault, step, cost);
    };
    step = {};
    Outcome outcome = Outcome::Failed;
    try {
        outcome = co_await self->m_parts.work.run(taking, stop);
    } catch (const CancelledError &) {
        co_return;
    } catch (const std::exception &) {
        // The machine has no thread to give; nothing was begun.
    }
    if (self)
        self->finish(outcome, isSet);
}

void PassphraseService::finish(Outcome outcome, bool isSet)
{
    m_isChanging = false;
    switch (outcome) {
    case Outcome::Done:
        m_parts.pause.right();
        found(isSet);
        break;
    case Outcome::WrongPassphrase: {
        m_parts.pause.wrong();
        const auto seconds = m_parts.pause.left().count();
        setMessage(u"That is not your passphrase, so nothing changed. You can try again in %1."_s.arg(
            seconds == 1 ? u"a second"_s : u"%1 seconds"_s.arg(seconds)));
        break;
    }
    case Outcome::TooLittleMemory:
        setMessage(u"This %1 has too little free memory for that now. Nothing changed."_s.arg(
            DesktopWords::here().device));
        break;
    case Outcome::Failed:
        // A keyring that didn't answer may have done it all the same.
        setMessage(u"%1 got no word that its key was stored in another form. The next time what held until "
                   u"now holds, or what you chose."_s.arg(Product::name));
    }
    Q_EMIT changed();
}

void PassphraseService::found(bool isSet)
{
    if (std::exchange(m_isSet, isSet) == isSet)
        return;
    Q_EMIT isSetChanged();
    Q_EMIT changed();
}

void PassphraseService::setMessage(const QString &message)
{
    if (std::exchange(m_message, message) != message)
        Q_EMIT changed();
}

} // namespace morvane
