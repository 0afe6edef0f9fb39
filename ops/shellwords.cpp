// SPDX-License-Identifier: MIT
#include "ops/shellwords.h"

#include <algorithm>

namespace ops {

namespace {

constexpr char kSpecial[] = " \t\n\\\"'`$&|;<>()*?[]{}!#~";
constexpr char kSpecialInDouble[] = "\\\"`$";

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n';
}

// Reads a line byte by byte, as the shell does.
class Splitter {
public:
    explicit Splitter(const QByteArray &breaks) : m_breaks(breaks) {}
    void take(char c);
    TypedLine end();

private:
    void endWord();
    void takePlain(char c);
    void add(char c, bool plain);

    const QByteArray &m_breaks;
    TypedLine m_line;
    QByteArray m_word;
    bool m_some = false; // a word has begun, be it an empty one in quotes
    bool m_escaped = false;
};

void Splitter::add(char c, bool plain)
{
    m_some = true;
    m_word += c;
    if (plain && (c == '=' || c == ':') && m_breaks.contains(c))
        m_line.done = m_word.size();
}

void Splitter::endWord()
{
    if (m_some)
        m_line.words.append(m_word);
    m_word.clear();
    m_some = false;
    m_line.done = 0;
}

void Splitter::takePlain(char c)
{
    if (isBlank(c))
        return endWord();
    m_escaped = c == '\\';
    if (c == '"' || c == '\'')
        m_line.quote = c;
    else if (!m_escaped)
        add(c, true);
    m_some = true;
}

void Splitter::take(char c)
{
    const char quote = m_line.quote;
    if (m_escaped) {
        if (quote == '"' && !QByteArray(kSpecialInDouble).contains(c))
            add('\\', false); // in front of anything else it means itself
        add(c, false);
        m_escaped = false;
    } else if (!quote) {
        takePlain(c);
    } else if (c == quote) {
        m_line.quote = '\0';
    } else if (quote == '"' && c == '\\') {
        m_escaped = true;
    } else {
        add(c, false);
    }
}

// Assignments may stand in front of the program's name.
TypedLine Splitter::end()
{
    if (m_escaped)
        m_word += '\\';
    m_line.words.append(m_word);
    const auto isAssignment = [](const QByteArray &word) { return word.indexOf('=') > 0; };
    const auto name = std::find_if_not(m_line.words.begin(), m_line.words.end(), isAssignment);
    if (name != m_line.words.end())
        m_line.words.erase(m_line.words.begin(), name + 1);
    return m_line;
}

QByteArray escaped(const QByteArray &text, const char *special)
{
    QByteArray safe;
    for (const char c : text) {
        if (QByteArray(special).contains(c))
            safe += '\\';
        safe += c;
    }
    return safe;
}

} // namespace

TypedLine typedLine(const QByteArray &line, const QByteArray &breaks)
{
    Splitter splitter(breaks);
    for (const char c : line)
        splitter.take(c);
    return splitter.end();
}

QByteArray spelled(const QByteArray &word, const TypedLine &line)
{
    const QByteArray rest = word.mid(line.done);
    if (line.quote == '\'')
        return QByteArray(rest).replace("'", "'\\''");
    return escaped(rest, line.quote ? kSpecialInDouble : kSpecial);
}

} // namespace ops
