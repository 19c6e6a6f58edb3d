#include "end_to_end/AppFixture.h"

#include "view_models/chat/ChatViewModel.h"

#include <QDirIterator>
#include <QFile>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The forms in which a text could lie on disk by mistake. Base64 has three, by where the text begins in a
// group of three bytes; the ends are cut off where neighbours would change them.
QList<QByteArray> formsOf(const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    QList<QByteArray> forms{utf8, QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2)};
    for (int shift = 0; shift < 3; ++shift) {
        const QByteArray encoded = (QByteArray(shift, 'x') + utf8).toBase64();
        forms += encoded.sliced(4, encoded.size() - 8);
    }
    return forms;
}

using PrivacyAtRestTest = AppFixture;

TEST_F(PrivacyAtRestTest, NoWordOfASessionLiesReadableInAnyFile)
{
    const QStringList marked{u"MARKEDquestionWORDS"_s, u"MARKEDretitledCHAT"_s, u"MARKEDsecondQUESTION"_s};
    say(marked[0]);
    ASSERT_TRUE(turnEnds());
    state->presentation().chat->rename(state->presentation().chat->conversationId(), marked[1]);
    useModel(u"status-500"_s);
    say(marked[2]);
    ASSERT_TRUE(turnEnds());
    const QString reply =
        state->presentation().chat->messages()->index(1).data(MessageListModel::TextRole).toString();
    const QString error = state->presentation().chat->banner().message;

    int filesRead = 0;
    const auto search = [&] {
        for (QDirIterator files(profile.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
             files.hasNext();) {
            QFile file(files.next());
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            const QByteArray contents = file.readAll();
            ++filesRead;
            for (const QString &text : marked + QStringList{reply.first(40), error}) {
                for (const QByteArray &form : formsOf(text))
                    EXPECT_FALSE(contents.contains(form))
                        << file.fileName().toStdString() << ": " << text.toStdString();
            }
        }
    };
    search(); // with the store open and its companions beside it
    stop();
    search();
    EXPECT_GE(filesRead, 4);

    // The search itself works: a readable copy is found.
    QFile planted(profile.filePath(u"planted"_s));
    ASSERT_TRUE(planted.open(QIODevice::WriteOnly));
    const QByteArray copy = "x" + marked[0].toUtf8().toBase64();
    planted.write(copy);
    const auto forms = formsOf(marked[0]);
    EXPECT_TRUE(
        std::any_of(forms.begin(), forms.end(), [&](const auto &form) { return copy.contains(form); }));
}

} // namespace

} // namespace morvane
