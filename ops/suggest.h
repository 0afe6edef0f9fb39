// SPDX-License-Identifier: MIT
//
// What somebody may have meant. Pure; any thread.
#ifndef CORVEL_OPS_SUGGEST_H
#define CORVEL_OPS_SUGGEST_H

#include <QByteArray>
#include <QByteArrayList>

namespace ops {

// The candidate that takes the fewest typing errors (a letter more, less, other, or two swapped; letter
// case does not count), or an empty text when none is near: more than a third of the word would be wrong.
QByteArray nearest(const QByteArray &word, const QByteArrayList &candidates);

// "; did you mean dst-port?" or an empty text: the end of a message about an unknown word.
QByteArray didYouMean(const QByteArray &word, const QByteArrayList &candidates);

} // namespace ops

#endif
