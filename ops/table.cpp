// SPDX-License-Identifier: MIT
#include "ops/table.h"

#include "ops/assignment.h"
#include "ops/csv.h"
#include "ops/jsontext.h"
#include "ops/suggest.h"
#include "ops/vocabulary.h"

#include <QHash>

#include <set>

namespace ops {

namespace {

constexpr int kMostComplaints = 20;
constexpr char kAbsent[] = "(absent)";
constexpr char kEmpty[] = "(empty)";
constexpr char kNumber[] = "(number)";
constexpr char kText[] = "(text)";
constexpr char kBase64[] = "(base64)";

// The columns behind channel, element and flow: every word of a channel, each once.
const QByteArrayList &wordColumns()
{
    static const QByteArrayList columns = [] {
        QByteArrayList words;
        for (const KnownName &known : knownNames()) {
            if (known.path.isEmpty() && !words.contains(known.word))
                words.append(known.word);
        }
        return words;
    }();
    return columns;
}

QByteArrayList headColumns()
{
    return QByteArrayList{"channel", "element", "flow"} + wordColumns();
}

// The known names of each row of a channel, by place: "", "video", "audio", "audio/0" ...
struct TableRow {
    Place place;
    std::vector<const KnownName *> cells; // by column, null where the row has no such word
};

std::vector<TableRow> makeRows()
{
    std::vector<TableRow> rows;
    QHash<QByteArray, std::size_t> places;
    for (const KnownName &known : knownNames()) {
        if (!known.path.isEmpty())
            continue;
        auto at = places.constFind(known.place);
        if (at == places.constEnd()) {
            at = places.insert(known.place, rows.size());
            const QByteArray text = known.place.isEmpty() ? "0" : "0/" + known.place;
            rows.push_back({*parsePlace(text), {}});
            rows.back().cells.resize(static_cast<std::size_t>(wordColumns().size()));
        }
        rows[*at].cells[static_cast<std::size_t>(wordColumns().indexOf(known.word))] = &known;
    }
    return rows;
}

const std::vector<TableRow> &channelRows()
{
    static const std::vector<TableRow> rows = makeRows();
    return rows;
}

QByteArray cellOf(const KnownName &known, const Value &value)
{
    if (value.isText && value.text.isEmpty() && isTextKind(known.kind))
        return kEmpty;
    const QByteArray words = inWords(known.kind, value);
    const bool sayable = value.isText == isTextKind(known.kind) && isUtf8(words) && words == words.trimmed();
    const Outcome<Value> back = fromWords(known.kind, words);
    if (sayable && back && *back == value)
        return safeCell(words);
    if (!value.isText)
        return kNumber + QByteArray::number(value.number);
    const bool plain = isUtf8(value.text) && !value.text.contains('\0') && !value.text.contains('\r');
    return plain ? kText + value.text : kBase64 + value.text.toBase64();
}

Outcome<Value> valueOf(const KnownName &known, const QByteArray &cell)
{
    if (cell == kEmpty)
        return Value::ofText(QByteArray());
    if (cell.startsWith(kText))
        return Value::ofText(cell.mid(static_cast<int>(sizeof kText) - 1));
    if (cell.startsWith(kBase64))
        return Value::ofText(QByteArray::fromBase64(cell.mid(static_cast<int>(sizeof kBase64) - 1)));
    if (cell.startsWith(kNumber))
        return fromWords(Kind::Number, cell.mid(static_cast<int>(sizeof kNumber) - 1));
    return fromWords(known.kind, plainCell(cell));
}

QByteArrayList exportRow(const Snapshot &values, int channel, const TableRow &row)
{
    const QByteArray path = channelPath(channel);
    const QByteArrayList parts = elementText(row.place).split('/');
    QByteArrayList cells{QByteArray::number(channel), parts.first(),
                         parts.size() > 1 ? parts[1] : QByteArray()};
    bool some = false;
    for (const KnownName *known : row.cells) {
        const Value *value = known ? values.find(path, known->name) : nullptr;
        cells.append(value ? cellOf(*known, *value) : QByteArray());
        some = some || value;
    }
    return some ? cells : QByteArrayList();
}

class Import {
public:
    Import(bool anyChannel, Draft &draft) : m_anyChannel(anyChannel), m_draft(draft) {}
    QByteArrayList run(const QByteArray &text);

private:
    void readHead(const QByteArrayList &cells);
    void readRow(const CsvRow &row);
    const TableRow *rowAt(const CsvRow &row, int &channel);
    void readCell(const CsvRow &row, int column, const TableRow &target, const QByteArray &path);
    void complain(int line, int column, const QByteArray &what);
    QByteArray cell(const CsvRow &row, const char *column) const;

    bool m_anyChannel;
    Draft &m_draft;
    QByteArrayList m_head;
    std::set<QByteArray> m_places;
    QByteArrayList m_complaints;
};

// "row 5, column F (rx.dst): ..."; columns as spreadsheets call them.
void Import::complain(int line, int column, const QByteArray &what)
{
    if (m_complaints.size() >= kMostComplaints)
        return;
    QByteArray letters;
    for (int rest = column + 1; rest > 0; rest = (rest - 1) / 26)
        letters.prepend(static_cast<char>('A' + (rest - 1) % 26));
    QByteArray where = "row " + QByteArray::number(line);
    if (column >= 0)
        where +=
            ", column " + letters + (column < m_head.size() ? " (" + m_head[column] + ')' : QByteArray());
    m_complaints.append(where + ": " + what);
}

QByteArray Import::cell(const CsvRow &row, const char *column) const
{
    return row.cells.value(m_head.indexOf(column)).trimmed();
}

void Import::readHead(const QByteArrayList &cells)
{
    std::set<QByteArray> seen;
    for (const QByteArray &name : cells) {
        m_head.append(name.trimmed());
        const int column = m_head.size() - 1;
        if (!headColumns().contains(m_head.last()))
            complain(1, column, "no such column" + didYouMean(m_head.last(), headColumns()));
        else if (!seen.insert(m_head.last()).second)
            complain(1, column, "the column is there twice");
    }
    if (!m_head.contains("channel"))
        complain(1, -1, "the first row has to name the columns, and one of them is \"channel\"");
}

const TableRow *Import::rowAt(const CsvRow &row, int &channel)
{
    const QByteArray element = cell(row, "element"), flow = cell(row, "flow");
    QByteArray text = cell(row, "channel");
    text += element.isEmpty() ? QByteArray() : '/' + element;
    text += flow.isEmpty() ? QByteArray() : '/' + flow;
    const Outcome<Place> place = parsePlace(text);
    const bool found = place && place->channel >= 0;
    if (!found || (!m_anyChannel && place->channel >= channelCount(m_draft.base()))) {
        complain(row.line, m_head.indexOf("channel"),
                 found   ? "the server has no channel " + cell(row, "channel")
                 : place ? QByteArray("a channel is needed")
                         : place.failure().text);
        return nullptr;
    }
    if (!m_places.insert(text).second)
        complain(row.line, -1, text + " is there twice");
    channel = place->channel;
    for (const TableRow &target : channelRows()) {
        if (target.place.element == place->element && target.place.flow == place->flow)
            return &target;
    }
    complain(row.line, -1, text + " has no row");
    return nullptr;
}

void Import::readCell(const CsvRow &row, int column, const TableRow &target, const QByteArray &path)
{
    const QByteArray text = row.cells[column].trimmed();
    const int word = column < m_head.size() ? wordColumns().indexOf(m_head[column]) : -1;
    if (text.isEmpty() || (word < 0 && column < m_head.size()))
        return;
    const KnownName *known = word < 0 ? nullptr : target.cells[static_cast<std::size_t>(word)];
    if (!known)
        return complain(row.line, column,
                        word < 0 ? QByteArray("there is no such column")
                                 : QByteArray("this row has no such value"));
    if (text == kAbsent)
        return m_draft.remove(path, known->name);
    // Blanks around a word are a slip, those of a marked text are its own.
    const bool marked = row.cells[column].startsWith('(');
    const Outcome<Value> value = valueOf(*known, marked ? row.cells[column] : text);
    if (!value)
        return complain(row.line, column, value.failure().text);
    m_draft.set(path, known->name, *value);
}

void Import::readRow(const CsvRow &row)
{
    int channel = 0;
    const TableRow *target = rowAt(row, channel);
    if (!target)
        return;
    const QByteArray path = channelPath(channel);
    for (int column = 0; column < row.cells.size(); ++column)
        readCell(row, column, *target, path);
}

QByteArrayList Import::run(const QByteArray &text)
{
    const Outcome<std::vector<CsvRow>> rows = readCsv(text);
    if (!rows)
        return {rows.failure().text};
    if (rows->empty())
        return {"the table is empty"};
    readHead(rows->front().cells);
    for (std::size_t at = 1; at < rows->size() && (m_complaints.isEmpty() || at > 1); ++at)
        readRow((*rows)[at]);
    return m_complaints;
}

} // namespace

QByteArray exportTable(const Snapshot &values)
{
    QByteArray text = csvLine(headColumns());
    const int channels = channelCount(values);
    for (int channel = 0; channel < channels; ++channel) {
        for (const TableRow &row : channelRows()) {
            const QByteArrayList cells = exportRow(values, channel, row);
            if (!cells.isEmpty())
                text += csvLine(cells);
        }
    }
    return text;
}

QByteArrayList importTable(const QByteArray &text, bool anyChannel, Draft &draft)
{
    return Import(anyChannel, draft).run(text);
}

} // namespace ops
