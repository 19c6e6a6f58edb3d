#include "DevelopmentAuthority.h"
#include "SealingCommands.h"
#include "Serve.h"

#include <QFile>
#include <QJsonDocument>
#include <QStringList>

#include <cstdio>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

enum ExitStatus { Done = 0, DidNotOpen = 1, NotTried = 2 };

constexpr qint64 longestInput = qint64(64) << 20; // bytes

constexpr const char *help =
    "morvane-private-cloud seal --public-key HEX    text in, one line of hexadecimal out\n"
    "morvane-private-cloud open --private-key HEX   hexadecimal in, text out;\n"
    "                                               status 1 when it does not open\n"
    "morvane-private-cloud deployment               what deployment/development.json must say of its "
    "authority\n";

QByteArray input()
{
    QFile file;
    if (!file.open(stdin, QIODevice::ReadOnly))
        throw std::runtime_error("the input can't be read");
    QByteArray bytes = file.read(longestInput + 1);
    if (bytes.size() > longestInput)
        throw SealingCommands::Unusable("the input is longer than 64 MiB");
    return bytes;
}

void write(const QByteArray &bytes)
{
    const auto size = static_cast<std::size_t>(bytes.size());
    if (std::fwrite(bytes.constData(), 1, size, stdout) != size || std::fflush(stdout) != 0)
        throw std::runtime_error("the answer can't be written");
}

ExitStatus open(const QString &key)
{
    const std::optional<QByteArray> text = SealingCommands::open(key, input());
    if (!text) {
        std::fputs("morvane-private-cloud: it does not open\n", stderr);
        return DidNotOpen;
    }
    write(*text);
    return Done;
}

ExitStatus run(const QStringList &words)
{
    if (words == QStringList{u"--help"_s}) {
        write(help + Serve::help());
        return Done;
    }
    if (words.value(0) == "serve"_L1) {
        Serve::run(words.mid(1));
        return Done;
    }
    if (words == QStringList{u"deployment"_s}) {
        write(QJsonDocument(DevelopmentAuthority::deploymentValues()).toJson());
        return Done;
    }
    if (words.size() == 3 && words[0] == "seal"_L1 && words[1] == "--public-key"_L1) {
        write(SealingCommands::seal(words[2], input()));
        return Done;
    }
    if (words.size() == 3 && words[0] == "open"_L1 && words[1] == "--private-key"_L1)
        return open(words[2]);
    std::fputs(help, stderr);
    return NotTried;
}

} // namespace

int main(int argc, char **argv)
{
    QStringList words;
    for (int i = 1; i < argc; ++i)
        words.append(QString::fromLocal8Bit(argv[i]));
    try {
        return run(words);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "morvane-private-cloud: %s\n", error.what());
        return NotTried;
    }
}
