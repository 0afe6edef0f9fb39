// SPDX-License-Identifier: MIT
//
// A configuration in memory: every value of a store, a dump or a settings file at one moment, in the
// store's own order (key path without regard to ASCII case, then value name), and what differs between
// two of them. Pure; any thread.
#ifndef CORVEL_OPS_SNAPSHOT_H
#define CORVEL_OPS_SNAPSHOT_H

#include <QByteArray>

#include <optional>
#include <vector>

namespace ops {

// A stored value: a text (any bytes) or a number.
struct Value {
    bool isText = false;
    QByteArray text;
    quint32 number = 0;

    static Value ofText(const QByteArray &text) { return {true, text, 0}; }
    static Value ofNumber(quint32 number) { return {false, QByteArray(), number}; }
    bool operator==(const Value &other) const
    {
        return isText == other.isText && number == other.number && text == other.text;
    }
    bool operator!=(const Value &other) const { return !(*this == other); }
};

struct Row {
    QByteArray path;
    QByteArray name;
    Value value;
};

// The store's order: negative, zero or positive.
int comparePaths(const QByteArray &left, const QByteArray &right);
int compareKeys(const QByteArray &leftPath, const QByteArray &leftName, const QByteArray &rightPath,
                const QByteArray &rightName);

class Snapshot {
public:
    const std::vector<Row> &rows() const { return m_rows; }
    bool empty() const { return m_rows.empty(); }

    // Null when there is no such value. Valid until the snapshot changes.
    const Value *find(const QByteArray &path, const QByteArray &name) const;
    // The stored text, or the empty one; the stored number, or 0: as the server reads them.
    QByteArray text(const QByteArray &path, const QByteArray &name) const;
    quint32 number(const QByteArray &path, const QByteArray &name) const;

    // Adds or replaces. Quick when the rows come in order. The spelling of an existing row's path stays.
    void set(const QByteArray &path, const QByteArray &name, const Value &value);
    void remove(const QByteArray &path, const QByteArray &name);

    // The rows of one path (without the paths below it).
    std::vector<const Row *> rowsOf(const QByteArray &path) const;

    // Rows in any order; of two for one key the later one counts.
    static Snapshot fromRows(std::vector<Row> rows);

private:
    std::vector<Row>::const_iterator position(const QByteArray &path, const QByteArray &name) const;

    std::vector<Row> m_rows;
};

// One value that is to become another one; absent before: it is made, absent after: it is deleted.
struct Change {
    QByteArray path;
    QByteArray name;
    std::optional<Value> before;
    std::optional<Value> after;
};

bool operator==(const Change &left, const Change &right);

using Changes = std::vector<Change>;

enum class Spelling { AnyCase, Exact };

// What turns `from` into `to`, in order. With Exact, a value whose path is spelled otherwise is
// deleted and made again, since the store keeps the spelling of the first writing.
Changes difference(const Snapshot &from, const Snapshot &to, Spelling spelling = Spelling::AnyCase);

} // namespace ops

#endif
