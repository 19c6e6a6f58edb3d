#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>

#include <array>
#include <optional>

namespace morvane {

// How far the proof of a private cloud's server is, for whoever watches. Whoever asks for a proof says what
// it is at; the one that began last counts. GUI thread.
class ProofWatch : public QObject {
    Q_OBJECT
public:
    // In the order in which they are shown.
    enum class Stage { asking, processor, baseSystem, boot, graphicsChips, key, sealing };
    static constexpr std::size_t stageCount = 7;

    enum class State {
        waiting,
        running,
        passed,
        notChecked, // what runs there asks for no such proof
        refused,    // here the proof ended, or the turn that wanted it was stopped
    };

    struct Run {
        quint64 number = 0; // of this watch, from 1
        QString model;
        QDateTime startedAt;
        std::array<State, stageCount> states{};
        bool isFromEarlier = false; // a proof that still holds was taken, so nothing was asked
        bool isOver = false;

        [[nodiscard]] State at(Stage stage) const { return states.at(static_cast<std::size_t>(stage)); }
        bool operator==(const Run &) const = default;
    };

    using QObject::QObject;

    // The latest run; nothing before the first.
    [[nodiscard]] const std::optional<Run> &run() const { return m_run; }

    // A new run, in which all stages wait. Its number names it in the calls below: those of a run that
    // another has replaced change nothing.
    quint64 begin(const QString &model, const QDateTime &startedAt);

    void set(quint64 number, Stage stage, State state);

    // A proof of before is taken: every stage up to the key passed then.
    void takeEarlier(quint64 number, bool hasGraphicsChips);

    // What still ran or waited ends here: as refused where it ran, as it is where it waited.
    void end(quint64 number);

Q_SIGNALS:
    void changed();

private:
    [[nodiscard]] Run *find(quint64 number);

    std::optional<Run> m_run;
    quint64 m_count = 0;
};

} // namespace morvane
