// SPDX-License-Identifier: MIT
//
// Results on standard output, as text for people or as JSON for programs; messages on standard error. A
// result is a row of items, each with both forms; only the one that is wanted is made.
#ifndef CORVELCTL_OUTPUT_H
#define CORVELCTL_OUTPUT_H

#include "ops/jsontext.h"
#include "ops/printable.h"

#include <QByteArrayList>

#include <nlohmann/json.hpp>

#include <vector>

using ops::Json;
using ops::jsonText;
using ops::printable;

class Output {
public:
    enum class Form { Text, Document, Lines };

    Form form = Form::Text;
    bool quiet = false;

    bool isText() const { return form == Form::Text; }

    // Names the command in the JSON document.
    void begin(const char *command) { m_command = command; }

    // An item in the JSON forms; nothing otherwise.
    template<class Maker>
    void item(const Maker &maker)
    {
        if (!isText())
            write(maker());
    }
    // A line of text in the text form; nothing otherwise. A newline is added.
    void line(const QByteArray &text);
    // Ready now, for one who reads along.
    static void flush();

    // Colours, when standard output is a terminal and NO_COLOR is not set.
    enum class Colour { Plain, Old, New, Head };
    QByteArray coloured(const QByteArray &text, Colour colour) const;

    // Ends the JSON document. False when the output could not be written.
    bool finish();

    // Messages for people, one line each; not shown when quiet unless they are errors.
    void note(const QByteArray &message) const;
    static void error(const QByteArray &message);

private:
    void write(const Json &item);

    QByteArray m_command;
    bool m_open = false;
};

// A standard stream that is closed would lend its number to the next file that is opened, and what is meant
// for it would end in there. So the number is taken, by something that refuses whatever is asked of the
// stream.
void guardStandardStreams();

// Lines with their columns aligned, two blanks between; the first row is the head.
QByteArrayList aligned(const std::vector<QByteArrayList> &rows);

#endif
