// SPDX-License-Identifier: MIT
//
// What may be completed where: each function gives all candidates of its sort, whatever they begin with.
// `current` is the word that is being typed. Nothing where the store cannot be read.
#ifndef CORVELCTL_CANDIDATES_H
#define CORVELCTL_CANDIDATES_H

#include "corvelctl/context.h"
#include "ops/place.h"

QByteArrayList interfaceAddresses(); // of this machine, IPv4
QByteArrayList channelNumbers(const Context &context);

QByteArrayList paths(const Context &context); // of the store, each once

// A key path only when it is begun: nobody looks for one among the channels.
QByteArrayList places(const Context &context, const QByteArray &current);

// The store's own names only once one is begun: there are many, and few people want them.
QByteArrayList wordsAndNames(const ops::Place &place, const QByteArray &current);

// "2/video/rx.dst": a place and behind it a word.
QByteArrayList placesAndWords(const Context &context, const QByteArray &current);

// What copy takes behind --fields and --step, the last of several.
QByteArrayList fieldWords(const QByteArray &current, bool steps);

// "rx.use=dst," completes to "rx.use=dst,if".
QByteArrayList valuesOf(const ops::Place &place, const QByteArray &current);

#endif
