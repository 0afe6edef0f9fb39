// SPDX-License-Identifier: MIT
//
// Access to a channel's values in the configuration store. Every value travels as text: a number as
// unsigned decimal. Result codes are not looked at: an absent or unreadable value reads as the empty
// text or "0". All calls may block for as long as the store does. What waits in the backlog (backlog.h) is
// read as if it were stored; so with something waiting it is the user interface thread's alone, else any
// thread's.
#ifndef CORVEL_CHANNELSTORE_H
#define CORVEL_CHANNELSTORE_H

#include "channel/valuenames.h"

#include <QByteArray>
#include <QString>

// The handle of the store that everything here reads and writes, for calls of the library itself.
void *defaultStore();

// The channel's key path, "KWX\Internal%1\IpConfig" with the zero-based index in decimal.
QString channelIpKeyName(int channel);

// Reads one value of a channel. isString: a text (cut at 4095 bytes, taken as Latin-1), else a number
// as unsigned decimal text. isPort hands a number to windowsSetUdpPortFilter as well. A channel below 0
// has no values.
QString cfgValue(const char *name, bool isString, int channel, bool isPort = false);

// Writes one value of a channel: a text as UTF-8, or a number parsed with toDword. Nothing is made
// durable here, see commitStore. A channel below 0 is ignored.
void setCfgValue(const char *name, const QString &value, bool isString, int channel);

// A number outside the channels, as the store has it; fallback when absent.
quint32 globalDword(const char *path, const char *name, quint32 fallback);
// Writes one; true when the stored value was created or changed.
bool setGlobalDword(const char *path, const char *name, quint32 value);

// True when the text value is absent or empty.
bool isTextEmpty(const QString &path, const char *name);

// Makes everything written so far durable. False when the store says that this, or a write before it, failed.
// What is being kept for later is not looked at.
bool commitStore();

// The number of channels of the machine: "MaxIntChannels", 4 when absent, at most kMaxChannels.
constexpr int kMaxChannels = 65536;
int channelCount();

// Unsigned decimal text to a 32-bit number: surrounding blanks allowed, larger numbers cut to their low
// 32 bits, anything else 0.
quint32 toDword(const QString &text);

// Hook of a platform with a port filter; here it does nothing and returns 0.
int windowsSetUdpPortFilter(quint32 port, bool enable);

#endif
