#pragma once

#include <QCoroTask>
#include <QObject>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

#include <functional>

namespace morvane {

class Work;
struct SupportFolders;

// Settings > Privacy: where data is kept, what the product's services know of this install, and the way to
// delete all of it. GUI thread.
class PrivacyViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    // What is kept where: "What" and "where" in turn.
    Q_PROPERTY(QStringList places READ places CONSTANT)
    Q_PROPERTY(QString keyPlace READ keyPlace CONSTANT) // while nothing else needs saying of it
    Q_PROPERTY(QString identifiersNote READ identifiersNote NOTIFY identifiersReplaced)
    Q_PROPERTY(QString shortLimits READ shortLimits CONSTANT)
    Q_PROPERTY(QStringList limits READ limits CONSTANT)
    Q_PROPERTY(QString confirmation READ confirmation CONSTANT) // what is typed to mean it

public:
    // `replaceIdentifiers` runs beside the GUI thread and may refer to what outlives the end of `work`.
    PrivacyViewModel(const SupportFolders &folders, std::function<void()> replaceIdentifiers, Work &work,
                     QObject *parent = nullptr);

    [[nodiscard]] const QStringList &places() const { return m_places; }
    [[nodiscard]] static QString keyPlace();
    [[nodiscard]] QString identifiersNote() const; // empty until they were replaced
    [[nodiscard]] static QString shortLimits();
    [[nodiscard]] static QStringList limits();
    [[nodiscard]] static QString confirmation();

    Q_INVOKABLE void replaceIdentifiers();
    Q_INVOKABLE bool isConfirmation(const QString &typed) const;
    // Nothing unless that was typed.
    Q_INVOKABLE void eraseAll(const QString &typed);

Q_SIGNALS:
    void identifiersReplaced();
    void erasureConfirmed();

private:
    QCoro::Task<> replace();

    QStringList m_places;
    std::function<void()> m_replaceIdentifiers;
    Work &m_work;
    bool m_hasReplaced = false;
};

} // namespace morvane
