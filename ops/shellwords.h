// SPDX-License-Identifier: MIT
//
// A command line of bash that is being typed: its words as a program would get them, and how what continues
// the last of them has to be spelled. bash hands a completion the bare line and takes its answers as they
// are. Pure; any thread.
#ifndef CORVEL_OPS_SHELLWORDS_H
#define CORVEL_OPS_SHELLWORDS_H

#include <QByteArray>
#include <QByteArrayList>

namespace ops {

struct TypedLine {
    QByteArrayList
        words;         // the last one is being typed and may be empty; the program's name is not among them
    char quote = '\0'; // the quote that the last word is inside of
    int done = 0;      // bytes of the last word that bash takes for another one: "rx.dst=" of "rx.dst=23"
};

// The line up to the cursor; breaks: the characters at which the shell ends a word ($COMP_WORDBREAKS).
// Variables and the like stay as they were typed.
TypedLine typedLine(const QByteArray &line, const QByteArray &breaks);

// What the shell shall put in place of what it takes for the last word.
QByteArray spelled(const QByteArray &word, const TypedLine &line);

} // namespace ops

#endif
