#include "Limits.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QString revocation()
{
    return u"revocation: whether a certificate was withdrawn since it was issued"_s;
}

QString physicalAttacks()
{
    return u"physical attacks: someone who holds the machine, its memory bus or a key taken from another"_s;
}

QStringList ofProcessor()
{
    return {u"TCB and firmware age: whether tee_tcb_svn, QE ISVSVN and FMSPC are levels that Intel still "
            "supports"_s,
            u"the TDX module: mrseam, mrsignerseam and seamattributes are shown and compared with nothing"_s,
            u"attributes: of tdattributes only the debug bit is judged, and xfam isn't"_s};
}

QStringList ofChips()
{
    return {u"which machine the graphics chips are in: nothing ties them to the server, and they are counted "
            "by report, so one chip may count twice"_s,
            u"the graphics chips' firmware and mode: what their reports measure is not read"_s};
}

} // namespace

QStringList Limits::ofQuote()
{
    return QStringList{revocation()} + ofProcessor() +
           QStringList{physicalAttacks(), u"the software: no measurement is compared with a list here"_s,
                       u"freshness: reportdata is shown and compared with nothing"_s};
}

QStringList Limits::ofGPUs()
{
    return QStringList{revocation()} + ofChips() + QStringList{physicalAttacks()};
}

QStringList Limits::ofReplay()
{
    return {u"whether a machine started this way: that is for a quote to say, whose rtmr3 this must be"_s,
            u"what the events stand for: their payloads are hashed and not judged"_s};
}

QStringList Limits::ofDocument()
{
    return QStringList{revocation()} + ofProcessor() + ofChips() +
           QStringList{
               physicalAttacks(), u"mrowner, mrownerconfig and the host's name beyond its form"_s,
               u"the programs that the accepted configuration starts, and what their operator does"_s};
}

QStringList Limits::ofExport()
{
    return QStringList{revocation()} + ofProcessor() +
           QStringList{physicalAttacks(), u"that the row is a certain message: the quote knows of none"_s};
}

} // namespace morvane
