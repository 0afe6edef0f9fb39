// SPDX-License-Identifier: MIT
#include "ops/changewords.h"

#include "ops/vocabulary.h"

namespace ops {

namespace {

// The words of the vocabulary and the captions of the dialog. A side stands before them.
// clang-format off
const struct { const char *word; const char *caption; } kCaptions[] = {
    {"src",           "Source Address"},
    {"src-port",      "Source Port"},
    {"dst",           "Destination Address"},
    {"dst-port",      "Destination Port"},
    {"if",            "Interface"},
    {"use",           "Use"},
    {"channels",      "Audio Channels per Flow"},
    {"total",         "Total Audio Channels"},
    {"ptime",         "Packet Time"},
    {"type",          "Type"},
    {"format",        "Video Format"},
    {"clock",         "Clock Source"},
    {"domain",        "Domain"},
    {"gm",            "Clock Mac Address / ID"},
    {"flow-mode",     "Single flow"},
    {"nmos.override", "Override NMOS Settings"},
    {"nmos.log",      "NMOS Log to file"},
    {"nmos.kept",     "Override NMOS Settings"},
    {"nmos.domain",   "NMOS Domain Name"},
    {"nmos.ip",       "NMOS Node IP"},
    {"nmos.server",   "NMOS Server IP"},
    {"nmos.port",     "NMOS Server Port"},
};
// clang-format on

QString captionOf(const QByteArray &word)
{
    for (const auto &row : kCaptions) {
        if (word == row.word)
            return QString::fromLatin1(row.caption);
    }
    return QString::fromUtf8(word);
}

// "audio/3" as "Audio 3"
QString elementInWords(const QByteArray &place)
{
    QString words = QString::fromLatin1(place);
    words.replace(QLatin1Char('/'), QLatin1Char(' '));
    return words.isEmpty() ? words : QLatin1Char(' ') + words.at(0).toUpper() + words.mid(1);
}

} // namespace

QString nameInWords(const QByteArray &path, const QByteArray &name)
{
    const KnownName *known = knownByKey(path, name);
    if (!known)
        return QString::fromUtf8(name);
    if (known->word.startsWith("rx."))
        return QLatin1String("Receive ") + captionOf(known->word.mid(3));
    if (known->word.startsWith("tx."))
        return QLatin1String("Send ") + captionOf(known->word.mid(3));
    return captionOf(known->word);
}

QString placeInWords(const QByteArray &path, const QByteArray &name)
{
    const KnownName *known = knownByKey(path, name);
    if (known && known->place == "server")
        return QStringLiteral("server");
    const int channel = channelOfPath(path);
    if (channel < 0)
        return QString::fromUtf8(path);
    return QStringLiteral("channel %1").arg(channel) + elementInWords(known ? known->place : QByteArray());
}

QString keysInWords(const QByteArray &path, const QByteArray &name, int more)
{
    const QString text = nameInWords(path, name) + QLatin1String(", ") + placeInWords(path, name);
    return more > 0 ? text + QStringLiteral(" and %1 more").arg(more) : text;
}

QString changeInWords(const Change &change)
{
    const QString before = QString::fromUtf8(valueInWords(change.path, change.name, change.before));
    const QString after = QString::fromUtf8(valueInWords(change.path, change.name, change.after));
    return nameInWords(change.path, change.name) + QLatin1String(", ") +
           placeInWords(change.path, change.name) + QLatin1String(", ") + before +
           QStringLiteral(" \u2190 ") + after;
}

} // namespace ops
