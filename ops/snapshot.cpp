// SPDX-License-Identifier: MIT
#include "ops/snapshot.h"

#include <algorithm>
#include <cstring>

namespace ops {

namespace {

unsigned char lower(char c)
{
    return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
}

int compareBytes(const QByteArray &left, const QByteArray &right)
{
    const int common = std::min(left.size(), right.size());
    const int order = std::memcmp(left.constData(), right.constData(), static_cast<std::size_t>(common));
    return order != 0 ? order : left.size() - right.size();
}

using RowIterator = std::vector<Row>::const_iterator;

// What is at its end comes last.
int orderOf(RowIterator left, RowIterator leftEnd, RowIterator right, RowIterator rightEnd)
{
    if (left == leftEnd || right == rightEnd)
        return left == leftEnd ? 1 : -1;
    return compareKeys(left->path, left->name, right->path, right->name);
}

bool comesBefore(const Row &row, const Row &other)
{
    return compareKeys(row.path, row.name, other.path, other.name) < 0;
}

} // namespace

int comparePaths(const QByteArray &left, const QByteArray &right)
{
    if (left.constData() == right.constData() && left.size() == right.size())
        return 0; // rows of one path share its bytes
    const int common = std::min(left.size(), right.size());
    // Most paths begin alike, in case as well.
    const char *const differs = std::mismatch(left.begin(), left.begin() + common, right.begin()).first;
    for (int at = static_cast<int>(differs - left.begin()); at < common; ++at) {
        const int order = lower(left[at]) - lower(right[at]);
        if (order != 0)
            return order;
    }
    return left.size() - right.size();
}

int compareKeys(const QByteArray &leftPath, const QByteArray &leftName, const QByteArray &rightPath,
                const QByteArray &rightName)
{
    const int order = comparePaths(leftPath, rightPath);
    return order != 0 ? order : compareBytes(leftName, rightName);
}

std::vector<Row>::const_iterator Snapshot::position(const QByteArray &path, const QByteArray &name) const
{
    const Row wanted{path, name, Value()};
    if (m_rows.empty() || comesBefore(m_rows.back(), wanted))
        return m_rows.end();
    return std::lower_bound(m_rows.begin(), m_rows.end(), wanted, comesBefore);
}

const Value *Snapshot::find(const QByteArray &path, const QByteArray &name) const
{
    const auto at = position(path, name);
    if (at == m_rows.end() || compareKeys(at->path, at->name, path, name) != 0)
        return nullptr;
    return &at->value;
}

QByteArray Snapshot::text(const QByteArray &path, const QByteArray &name) const
{
    const Value *value = find(path, name);
    return value && value->isText ? value->text : QByteArray();
}

quint32 Snapshot::number(const QByteArray &path, const QByteArray &name) const
{
    const Value *value = find(path, name);
    return value && !value->isText ? value->number : 0;
}

void Snapshot::set(const QByteArray &path, const QByteArray &name, const Value &value)
{
    const auto at = m_rows.begin() + (position(path, name) - m_rows.cbegin());
    if (at != m_rows.end() && compareKeys(at->path, at->name, path, name) == 0)
        at->value = value;
    else
        m_rows.insert(at, {path, name, value});
}

void Snapshot::remove(const QByteArray &path, const QByteArray &name)
{
    const auto at = position(path, name);
    if (at != m_rows.end() && compareKeys(at->path, at->name, path, name) == 0)
        m_rows.erase(at);
}

Snapshot Snapshot::fromRows(std::vector<Row> rows)
{
    std::stable_sort(rows.begin(), rows.end(), comesBefore);
    Snapshot snapshot;
    snapshot.m_rows.reserve(rows.size());
    for (Row &row : rows)
        snapshot.set(row.path, row.name, row.value);
    return snapshot;
}

std::vector<const Row *> Snapshot::rowsOf(const QByteArray &path) const
{
    std::vector<const Row *> found;
    for (auto at = position(path, QByteArray()); at != m_rows.end() && comparePaths(at->path, path) == 0;
         ++at)
        found.push_back(&*at);
    return found;
}

bool operator==(const Change &left, const Change &right)
{
    return left.path == right.path && left.name == right.name && left.before == right.before &&
           left.after == right.after;
}

Changes difference(const Snapshot &from, const Snapshot &to, Spelling spelling)
{
    Changes changes;
    auto left = from.rows().begin();
    auto right = to.rows().begin();
    while (left != from.rows().end() || right != to.rows().end()) {
        const int order = orderOf(left, from.rows().end(), right, to.rows().end());
        const bool respelled = order == 0 && spelling == Spelling::Exact && left->path != right->path;
        if (order < 0 || respelled)
            changes.push_back({left->path, left->name, left->value, std::nullopt});
        if (order > 0 || respelled)
            changes.push_back({right->path, right->name, std::nullopt, right->value});
        else if (order == 0 && left->value != right->value)
            changes.push_back({right->path, right->name, left->value, right->value});
        left += order <= 0;
        right += order >= 0;
    }
    return changes;
}

} // namespace ops
