// SPDX-License-Identifier: MIT
#include "ops/csv.h"

#include "ops/jsontext.h"

#include <algorithm>

namespace ops {

namespace {

constexpr char kByteOrderMark[] = "\xef\xbb\xbf";
constexpr char kDangerous[] = "=+-@\t\r'(";

QByteArray quotedCell(const QByteArray &cell)
{
    const auto special = [](char c) {
        return c == ',' || c == ';' || c == '\t' || c == '"' || c == '\n' || c == '\r';
    };
    if (std::none_of(cell.begin(), cell.end(), special))
        return cell;
    return '"' + QByteArray(cell).replace("\"", "\"\"") + '"';
}

char separatorOf(const QByteArray &text)
{
    const QByteArray head = text.left(text.indexOf('\n'));
    const char *const choices = ",;\t";
    char best = ',';
    for (const char *choice = choices; *choice; ++choice) {
        if (head.count(*choice) > head.count(best))
            best = *choice;
    }
    return best;
}

class Reader {
public:
    Reader(const QByteArray &text, char separator) : m_text(text), m_separator(separator) {}
    Outcome<std::vector<CsvRow>> read();

private:
    bool readCell();
    bool readQuoted(QByteArray &cell);
    void endRow();
    bool atEnd() const { return m_at >= m_text.size(); }
    bool atLineEnd() const { return atEnd() || is(m_at, '\n') || (is(m_at, '\r') && is(m_at + 1, '\n')); }
    bool is(int at, char c) const { return at < m_text.size() && m_text[at] == c; }

    const QByteArray &m_text;
    char m_separator;
    int m_at = 0;
    int m_line = 1;
    CsvRow m_row{1, {}};
    std::vector<CsvRow> m_rows;
};

// Behind the opening quote; false when it is never closed.
bool Reader::readQuoted(QByteArray &cell)
{
    while (!atEnd()) {
        const char c = m_text[m_at++];
        const bool doubled = c == '"' && !atEnd() && m_text[m_at] == '"';
        if (c == '"' && !doubled)
            return true;
        m_at += doubled;
        m_line += c == '\n';
        cell += c;
    }
    return false;
}

bool Reader::readCell()
{
    QByteArray cell;
    if (!atEnd() && m_text[m_at] == '"') {
        ++m_at;
        if (!readQuoted(cell))
            return false;
    } else {
        const int start = m_at;
        while (!atLineEnd() && m_text[m_at] != m_separator && m_text[m_at] != '"')
            ++m_at;
        cell = m_text.mid(start, m_at - start);
    }
    m_row.cells.append(cell);
    return atLineEnd() || m_text[m_at] == m_separator;
}

void Reader::endRow()
{
    const bool blank = m_row.cells.size() == 1 && m_row.cells.first().isEmpty();
    if (!blank)
        m_rows.push_back(m_row);
    if (!atEnd())
        m_at += m_text[m_at] == '\r' ? 2 : 1;
    m_row = {++m_line, {}};
}

Outcome<std::vector<CsvRow>> Reader::read()
{
    while (!atEnd()) {
        if (!readCell())
            return wrong("row " + QByteArray::number(m_row.line) +
                         ": a quote inside a cell, or one that is not closed");
        const bool more = !atLineEnd();
        m_at += more;
        if (more && atLineEnd())
            m_row.cells.append(QByteArray()); // a separator at the end of a line has an empty cell behind it
        if (!more || atLineEnd())
            endRow();
    }
    return std::move(m_rows);
}

} // namespace

QByteArray csvLine(const QByteArrayList &cells)
{
    QByteArrayList quoted;
    for (const QByteArray &cell : cells)
        quoted.append(quotedCell(cell));
    return quoted.join(',') + "\r\n";
}

Outcome<std::vector<CsvRow>> readCsv(const QByteArray &text)
{
    if (!isUtf8(text))
        return wrong("not UTF-8; save it as \"CSV UTF-8\"");
    if (text.contains('\0'))
        return wrong("a zero byte: no text");
    const QByteArray bare = text.startsWith(kByteOrderMark) ? text.mid(3) : text;
    return Reader(bare, separatorOf(bare)).read();
}

QByteArray safeCell(const QByteArray &text)
{
    const bool dangerous = !text.isEmpty() && QByteArray(kDangerous).contains(text[0]);
    return dangerous ? '\'' + text : text;
}

QByteArray plainCell(const QByteArray &cell)
{
    const bool guarded = cell.size() > 1 && cell[0] == '\'' && QByteArray(kDangerous).contains(cell[1]);
    return guarded ? cell.mid(1) : cell;
}

} // namespace ops
