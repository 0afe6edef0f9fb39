// SPDX-License-Identifier: MIT
//
// The settings file (".ipp"): the settings of every channel as sections of key=value lines.
//
// Writer and reader walk two tables of their own, because they differ: the writer writes the
// network interfaces, which the reader ignores, and the reader accepts keys that the writer never
// writes. Neither knows a file, a store or a widget. Everything here may be called from any thread and
// never blocks (the writer apart from calling its value function).
#ifndef CORVEL_SETTINGSFILE_H
#define CORVEL_SETTINGSFILE_H

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

#include <functional>
#include <string>

// Returns a channel's stored text; isString is false for numbers (unsigned decimal text).
using SettingsValueSource = std::function<QString(const char *name, bool isString, int channel)>;

// What every settings file starts with, in the four pieces that make it up.
QByteArrayList settingsHeader();

// The section of one channel in UTF-8, lines ending in "\n", with `flows` audio flows per direction (0 or
// less: none).
QByteArray settingsSection(const SettingsValueSource &value, int channel, int flows);

// The whole text of a settings file: the header and the sections of channels 0 to channels - 1.
QByteArray writeSettingsFile(const SettingsValueSource &value, int channels, int flows);

// True when a file that starts with this line is a settings file. Letter case and any text behind the
// signature do not matter.
bool isSettingsSignature(const QByteArray &firstLine);

// A number as the store keeps it: unsigned decimal, blanks around it allowed, the low 32 bits kept.
// 0 for a text that is no such number: negative, beyond 64 bits, or anything else.
quint32 settingsNumber(const QString &text);

// The number that a global value's text stands for: decimal, with sign, blanks around it allowed, the
// low 32 bits kept ("-1" is 4294967295). 0 for any other text.
quint32 globalSettingsNumber(const QString &text);

// One value to store.
struct SettingsValue {
    QByteArray key;        // name to store it under
    bool isString = false; // text, or number (unsigned decimal text, not checked)
    QString text;          // as it stands in the file, untrimmed
    int channel = 0;       // counted from the first section of the file; no upper bound is checked
    bool global = false;   // belongs to the machine instead of the channel: convert with globalSettingsNumber
};

// Lines with a key and a value that were passed over, by the reason.
struct SettingsLeftOut {
    int interfaces = 0;     // they belong to the machine that the file came from
    int unknown = 0;        // a key that is not accepted
    int beforeSections = 0; // no channel's: they stand before the first section
    int all() const { return interfaces + unknown + beforeSections; }
};

// Takes the lines behind the signature line one by one.
class SettingsReader {
public:
    enum class Result {
        Ignored, // nothing to do for this line
        Value,   // *out was filled: store it
        Stop     // a section below the first one: reading ends here, and what was stored stays stored
    };

    // `line` comes without its line end (nothing is trimmed here) and ends at its first NUL byte. *out
    // is touched only when the result is Value. After a Stop every further line is a Stop.
    Result feed(const QByteArray &line, SettingsValue *out);

    const SettingsLeftOut &leftOut() const { return m_leftOut; }

private:
    Result section(const QByteArray &line);
    void leaveOut();

    int m_first = -1;
    int m_current = -1;
    bool m_stopped = false;
    SettingsLeftOut m_leftOut;
    std::string m_key; // one that is not accepted, in lower case; a member only to keep its memory
};

#endif
