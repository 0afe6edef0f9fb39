// SPDX-License-Identifier: MIT
//
// Every value name that the server knows, with the place and the word under which people reach it:
// "ReceiveAudDestinationIp3" of channel 2 is "2/audio/3 rx.dst". Pure; any thread.
#ifndef CORVEL_OPS_VOCABULARY_H
#define CORVEL_OPS_VOCABULARY_H

#include "ops/place.h"
#include "ops/valuewords.h"

#include <QByteArrayList>

namespace ops {

struct KnownName {
    QByteArray name;  // in the store: "ReceiveAudDestinationIp3"
    QByteArray place; // behind the channel: "audio/3", "video", ""; "server" for what exists once
    QByteArray word;  // "rx.dst"
    Kind kind;
    QByteArray path; // of what exists once; empty: the channel's
};

// In the order in which they are shown: the server's, the channel's, video, audio with its flows, anc.
const std::vector<KnownName> &knownNames();

// Null when the store's key means nothing to us.
const KnownName *knownByKey(const QByteArray &path, const QByteArray &name);

// Null when there is no such word at that place. A word that all flows share is found at each of them, and
// the store's own value names are words too.
const KnownName *knownByWord(const Place &place, const QByteArray &word);

// The key path under which that name is kept for that place.
QByteArray pathOf(const Place &place, const KnownName &known);

// The words and value names at a place, for completion and near misses.
QByteArrayList wordsAt(const Place &place);
QByteArrayList valueNamesAt(const Place &place);

// Of a name that means nothing to us (null): what the value is.
Kind kindOf(const KnownName *known, const Value &value);

// "2/video rx.dst", or path and name as they stand when the key means nothing to us.
QByteArray keyInWords(const QByteArray &path, const QByteArray &name);

// The value in the words of its kind, "(absent)" when there is none; a text of a site's own in quotes.
QByteArray valueInWords(const QByteArray &path, const QByteArray &name, const std::optional<Value> &value);

} // namespace ops

#endif
