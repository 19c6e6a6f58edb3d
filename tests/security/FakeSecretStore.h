#pragma once

#include "security/SecretStoring.h"
#include "security/UserPresenceConfirming.h"

#include <QStringList>

#include <atomic>
#include <functional>
#include <map>
#include <mutex>

namespace morvane {

// A keyring with a script: what it holds, whether it is open, which calls it refuses. Any thread.
class FakeSecretStore final : public SecretStoring {
public:
    enum class Call { Condition, Unlock, Find, Items, Add, Update, Remove };

    std::atomic<Condition> state = Condition::Open;
    std::atomic<bool> canMark = true;
    // Asked before each call; a status refuses it.
    std::function<std::optional<KeychainStatus>(Call)> refusal;
    std::function<void(std::stop_token)> onUnlock;
    // What is kept instead of the value that was given.
    std::function<QByteArray(QByteArray)> corruption;
    std::map<std::pair<QString, QString>, Item> held;
    std::map<Call, int> calls;

    void refuse(Call refused, KeychainStatus status)
    {
        refusal = [=](Call call) { return call == refused ? std::optional(status) : std::nullopt; };
    }

    Condition condition(const QString &) override
    {
        count(Call::Condition);
        return state;
    }
    void unlock(const QString &, std::stop_token stop) override
    {
        count(Call::Unlock);
        if (onUnlock)
            onUnlock(stop);
        state = Condition::Open;
    }
    std::optional<Item> find(const QString &service, const QString &account) override
    {
        const auto lock = openFor(Call::Find);
        const auto found = held.find({service, account});
        return found == held.end() ? std::nullopt : std::optional(found->second);
    }
    std::vector<Item> items(const QString &service) override
    {
        const auto lock = openFor(Call::Items);
        std::vector<Item> result;
        for (const auto &[key, item] : held) {
            if (key.first == service)
                result.push_back(item);
        }
        return result;
    }
    void add(const QString &service, const Item &item) override
    {
        const auto lock = openFor(Call::Add);
        Item kept = item;
        if (corruption)
            kept.value = corruption(kept.value);
        held.insert_or_assign({service, item.account}, kept);
    }
    bool update(const QString &service, const QString &account, const QByteArray &value) override
    {
        const auto lock = openFor(Call::Update);
        const auto found = held.find({service, account});
        if (found == held.end())
            return false;
        found->second.value = value;
        return true;
    }
    bool remove(const QString &service, const QString &account) override
    {
        const auto lock = openFor(Call::Remove);
        return held.erase({service, account}) > 0;
    }
    bool keepsPresence() const override { return canMark; }

private:
    void count(Call call)
    {
        const std::lock_guard lock(m_mutex);
        ++calls[call];
        if (const auto status = refusal ? refusal(call) : std::nullopt)
            throw SecretStoreError(*status);
    }
    std::unique_lock<std::mutex> openFor(Call call)
    {
        count(call);
        if (state != Condition::Open)
            throw SecretStoreError(KeychainStatus::InteractionNotAllowed);
        return std::unique_lock(m_mutex);
    }

    std::mutex m_mutex;
};

// A person who does what the test says, and what they were told.
class FakePresence final : public UserPresenceConfirming {
public:
    Answer answer = Answer::Unavailable;
    QStringList reasons;

    bool canConfirm() const override { return answer != Answer::Unavailable; }
    Answer confirm(const QString &reason, std::stop_token) override
    {
        reasons.append(reason);
        return answer;
    }
};

} // namespace morvane
