#include "Commands.h"
#include "Help.h"
#include "Options.h"

#include "attestation/evidence/CaseText.h"

#include <QJsonDocument>

#include <cstdio>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

enum ExitStatus { Passed = 0, Refused = 1, NotChecked = 2 };

void write(std::FILE *stream, const QByteArray &text)
{
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stream);
}

// In JSON the verdict is a member of the object; the line goes to standard error, so that standard output
// stays one JSON text.
void print(const Report &report, Options::Output output)
{
    if (output == Options::Output::Text)
        return write(stdout, report.text().toUtf8());
    const QJsonObject object = report.json();
    write(stdout, QJsonDocument(object).toJson());
    write(stderr, "verdict: " + object.value("verdict"_L1).toString().toUtf8() + "\n");
}

int run(const QStringList &arguments)
{
    const Options options = Options::parse(arguments);
    if (options.command == Options::Command::Help) {
        write(stdout, Help::text().toUtf8());
        return Passed;
    }
    for (const QString &pin : options.replacedPins)
        write(stderr, "WARNING: the " + pin.toUtf8() +
                          " pin is replaced. This run proves nothing about real hardware.\n");
    const Report report = Commands::run(options);
    print(report, options.output);
    return report.isOk() ? Passed : Refused;
}

} // namespace

int main(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    try {
        return run(arguments);
    } catch (const UsageError &error) {
        write(stderr, "morvane-proof: " + error.message().toUtf8() + ". morvane-proof --help explains.\n");
        write(stdout, "verdict: " +
                          CaseText::of("notChecked"_L1, {CaseText::quoted(error.message())}).toUtf8() + "\n");
    } catch (const std::exception &error) {
        write(stderr, QByteArray("morvane-proof: ") + error.what() + "\n");
        write(stdout, "verdict: notChecked(\"the machine failed\")\n");
    }
    return NotChecked;
}
