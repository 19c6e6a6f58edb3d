#pragma once

#include "async/TaskHandle.h"
#include "documents/DocumentImporting.h"
#include "view_models/chat/AttachmentWords.h"
#include "view_models/chat/ErrorBanner.h"
#include "view_models/chat/HandedOver.h"

#include <QImage>
#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <exception>
#include <functional>
#include <optional>

namespace morvane {

class BannerDesk;
class SettingsStore;

// The one attachment that a message takes, from the moment it is handed over until it is sent or taken out.
// GUI thread.
//
// What is handed over takes the place of what was there once it is read, so that what can't be read costs
// nothing but a banner. Whatever else is handed over meanwhile ends the reading and is read instead. While
// something is read no message is sent: none goes without what was to go with it. Nothing is stored here.
class AttachmentDesk : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(State state READ state NOTIFY changed)
    Q_PROPERTY(QString name READ name NOTIFY changed)
    // Its kind and size, how far the reading is, or what went wrong.
    Q_PROPERTY(QString detail READ detail NOTIFY changed)
    Q_PROPERTY(QString glyph READ glyph NOTIFY changed)
    Q_PROPERTY(double progress READ progress NOTIFY changed) // 0 to 1; negative while it isn't known
    // What will be sent of what is attached, where that is text.
    Q_PROPERTY(QString text READ text NOTIFY changed)
    // What the person should know of what is attached; empty for nothing.
    Q_PROPERTY(QString notice READ notice NOTIFY changed)

public:
    enum class State { Empty, Reading, Ready, Cut, Failed };
    Q_ENUM(State)

    // What is given outlives this object.
    struct Services {
        SettingsStore &settings;
        BannerDesk &banner;
        DocumentImporting *documents = nullptr; // absent: no file and no picture can be attached
        // What is on the clipboard; may be null.
        std::function<const QMimeData *()> clipboard = {};
    };

    explicit AttachmentDesk(Services services, QObject *parent = nullptr);

    [[nodiscard]] State state() const;
    [[nodiscard]] QString name() const;
    [[nodiscard]] QString detail() const;
    [[nodiscard]] QString glyph() const;
    [[nodiscard]] double progress() const;
    [[nodiscard]] QImage thumbnail() const; // null for none
    [[nodiscard]] QString text() const { return m_pending && !m_reading ? m_pending->text : QString(); }
    [[nodiscard]] QString notice() const { return m_reading ? QString() : m_notice; }

    [[nodiscard]] bool isReading() const { return m_reading.has_value(); }
    [[nodiscard]] const std::optional<ImportedAttachment> &pending() const { return m_pending; }
    // What isn't read yet, as it was handed over, the one that is being read included.
    [[nodiscard]] const QList<PastedContent> &unread() const { return m_unread; }
    [[nodiscard]] bool holdsPicture() const { return m_pending && m_pending->imageData; }

    // Files are read one after another, and the last one that can be read stays.
    Q_INVOKABLE void attach(const QList<QUrl> &files);
    void attachImage(const QByteArray &data);
    // What of it can be attached; false when there is nothing but a text that can be typed as well.
    Q_INVOKABLE bool take(const morvane::HandedOver &handed);
    // The clipboard's files or picture, one of them, or its text where that is too long for the message
    // field; false for any other text.
    Q_INVOKABLE bool paste();
    Q_INVOKABLE bool canPaste() const;
    // The clipboard's text as an attachment.
    Q_INVOKABLE void askAboutClipboard();
    // One after another, as attach() does.
    void read(QList<PastedContent> handed);
    // What was made elsewhere.
    void hold(ImportedAttachment attachment);

    // Ends the reading; when nothing is read, takes out what is there.
    Q_INVOKABLE void remove();
    // Ends the reading and takes out what is there.
    void clear();
    // The same, for a message that takes it along.
    [[nodiscard]] std::optional<ImportedAttachment> release();

Q_SIGNALS:
    void changed();
    void attached(); // something new is pending

private:
    using Handed = QList<PastedContent>;

    void holdText(const QString &name, const QString &text);
    static QCoro::Task<> readAll(QPointer<AttachmentDesk> self, Handed handed, std::stop_token stop);
    void begin(const PastedContent &content, qsizetype number, qsizetype count);
    void noteProgress(int done, int total);
    void keep(ImportedAttachment attachment);
    void fail(const std::exception_ptr &error, qsizetype count);
    void endReading(qsizetype handed, qsizetype kept);
    void stopReading();

    struct Failure {
        QString name;
        QString message;
    };

    Services m_services;
    std::optional<ImportedAttachment> m_pending;
    std::optional<AttachmentWords::Reading> m_reading;
    Handed m_unread;
    std::optional<Failure> m_failure;
    std::optional<ErrorBanner> m_told; // of the latest failure
    QString m_former;                  // what was pending when the reading began; empty for nothing
    QString m_notice;
    TaskHandle m_task;
};

} // namespace morvane
