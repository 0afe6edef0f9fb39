// SPDX-License-Identifier: MIT
//
// Several places and words at once, as a command line or a line of a batch gives them. Whoever calls writes
// the draft only when everything went well. Pure; any thread.
#ifndef CORVEL_OPS_BATCH_H
#define CORVEL_OPS_BATCH_H

#include "ops/assignment.h"

#include <QByteArrayList>

namespace ops {

struct Rules {
    Foreign foreign = Foreign::Refuse;
    bool anyChannel = false; // also beyond the channels that the server offers
};

// What to say where the server has fewer channels.
QByteArray noSuchChannel(int channel, int channels);

// Fails for a channel that the server does not offer, unless something is stored for it all the same.
Outcome<Done> checkChannel(int channel, const Snapshot &snapshot);

// The places of a text, each a channel that the server offers.
Outcome<std::vector<Place>> placesOf(const QByteArray &text, const Rules &rules, const Snapshot &snapshot);

Outcome<Done> setWords(const QByteArray &places, const QByteArrayList &assignments, const Rules &rules,
                       Draft &draft);
Outcome<Done> unsetWords(const QByteArray &places, const QByteArrayList &words, const Rules &rules,
                         Draft &draft);

// Deletes everything that belongs to the places, known or not.
Outcome<Done> unsetPlace(const QByteArray &places, Draft &draft);

// Lines of a place and its assignments, as behind "set"; blank lines and those that start with "#" do not
// count, and double quotes keep blanks in a value. A failure names the line.
Outcome<Done> setLines(const QByteArray &text, const Rules &rules, Draft &draft);

// The label of a batch in the history: the words of the command, cut at a whole character.
QByteArray batchLabel(const QByteArrayList &words);

} // namespace ops

#endif
