// SPDX-License-Identifier: MIT
//
// "rx.dst=239.20.2.1:20000" and its like: what the words of a command line select and set. Pure; any thread.
#ifndef CORVEL_OPS_ASSIGNMENT_H
#define CORVEL_OPS_ASSIGNMENT_H

#include "ops/draft.h"
#include "ops/vocabulary.h"

namespace ops {

struct Key {
    QByteArray path;
    QByteArray name;
};

enum class Foreign { Refuse, Allow }; // names that mean nothing to us

// The values that a word selects: one, or both sides for "dst" instead of "rx.dst", and "channels", "flows"
// and "ptime" of a whole channel.
Outcome<std::vector<Key>> select(const Place &place, const QByteArray &word, Foreign foreign);

// Puts "word=value" into the draft. Besides single words: "rx.dst=IP:PORT" sets address and port;
// "channels=" and "flows=" keep the totals right; a value name of a site's own, when allowed, takes
// "name=text" or "name:=number".
Outcome<Done> assign(const Place &place, const QByteArray &assignment, Foreign foreign, Draft &draft);

// The words of a place; of a key path, which has none of its own, the names that stand there.
QByteArrayList wordsIn(const Snapshot &snapshot, const Place &place);

// The number of channels that the server offers, as the dialog counts them.
int channelCount(const Snapshot &snapshot);

// Audio flows of a channel: total channels / channels per flow, at most 8.
int flowCount(const Snapshot &snapshot, int channel);

} // namespace ops

#endif
